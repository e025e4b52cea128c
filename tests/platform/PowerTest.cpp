// Switching off, against a login manager of the test's own on a bus of its own.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Power.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QProcess>
#include <QThread>

#include <gtest/gtest.h>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace platform {
namespace {

class LoginManager : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

  public:
    bool allowed = true;
    int calls = 0;

  public Q_SLOTS:
    QString CanPowerOff() { return allowed ? u"yes"_s : u"challenge"_s; }
    void PowerOff(bool interactive) {
        EXPECT_FALSE(interactive);
        if (!allowed) {
            sendErrorReply(QDBusError::AccessDenied, u"no"_s);
            return;
        }
        ++calls;
    }
};

TEST(Power, IsAskedOfTheLoginManager) {
    int argc = 1;
    char name[] = "test";
    char* argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    QProcess bus;
    bus.start(u"dbus-daemon"_s, {u"--session"_s, u"--nofork"_s, u"--print-address"_s});
    ASSERT_TRUE(bus.waitForReadyRead(10'000)) << bus.errorString().toStdString();
    const QByteArray address = bus.readLine().trimmed();
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", address);
    EXPECT_FALSE(CanPowerOff()); // nobody there
    EXPECT_EQ(PowerOff().code, ENOSYS);

    // Answers from a thread of its own, as the call under test blocks this one.
    LoginManager manager;
    QThread thread;
    manager.moveToThread(&thread);
    thread.start();
    {
        QDBusConnection service =
            QDBusConnection::connectToBus(QString::fromLatin1(address), u"manager"_s);
        ASSERT_TRUE(service.registerObject(u"/org/freedesktop/login1"_s, &manager,
                                           QDBusConnection::ExportAllSlots));
        ASSERT_TRUE(service.registerService(u"org.freedesktop.login1"_s));
    }
    EXPECT_TRUE(CanPowerOff());
    EXPECT_TRUE(PowerOff().Ok());
    EXPECT_EQ(manager.calls, 1);
    manager.allowed = false;
    EXPECT_FALSE(CanPowerOff());
    EXPECT_EQ(PowerOff().code, EPERM);
    thread.quit();
    thread.wait();
    QDBusConnection::disconnectFromBus(u"manager"_s);
    bus.kill();
    bus.waitForFinished();
}

} // namespace
} // namespace platform

#include "PowerTest.moc"
