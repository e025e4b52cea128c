// Switches the machine off through systemd-logind, or what stands in for it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Power.h"

#include <QDBusConnection>
#include <QDBusMessage>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace platform {

namespace {

constexpr int kAnswerMs = 1000;

QDBusMessage AskLoginManager(const QString& method, const QVariantList& arguments = {}) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(u"org.freedesktop.login1"_s, u"/org/freedesktop/login1"_s,
                                       u"org.freedesktop.login1.Manager"_s, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    return QDBusConnection::systemBus().call(call, QDBus::Block, kAnswerMs);
}

} // namespace

bool CanPowerOff() {
    const QDBusMessage answer = AskLoginManager(u"CanPowerOff"_s);
    return answer.type() == QDBusMessage::ReplyMessage &&
           answer.arguments().value(0).toString() == u"yes";
}

SystemError PowerOff() {
    // Not interactive: nobody is there to type a password.
    const QDBusMessage answer = AskLoginManager(u"PowerOff"_s, {false});
    if (answer.type() == QDBusMessage::ReplyMessage) {
        return {};
    }
    const bool refused = answer.errorName().contains(u"AccessDenied"_s) ||
                         answer.errorName().contains(u"AuthorizationRequired"_s);
    SystemError error = SystemError::Of(refused ? EPERM : ENOSYS);
    if (!answer.errorMessage().isEmpty()) {
        error.text = answer.errorMessage();
    }
    return error;
}

} // namespace platform
