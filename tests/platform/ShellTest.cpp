// Handing files over to the desktop, with an opener of the test's own.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/Shell.h"

#include "tests/platform/TestSupport.h"

#include <cerrno>
#include <poll.h>

using namespace platform;
using testing_support::Sandbox;
using testing_support::Variable;

namespace {

/// An xdg-open that writes the number of its arguments and the arguments, a line each, into a pipe.
class Opener : public testing::Test {
  protected:
    Sandbox m_box;
    Variable m_path{"PATH", m_box.Bytes("bin")};
    FileDescriptor m_pipe;

    void SetUp() override {
        m_box.MakeFolder("bin");
        ASSERT_EQ(mkfifo(m_box.Bytes("pipe").constData(), 0600), 0);
        m_pipe = FileDescriptor(open(m_box.Bytes("pipe").constData(), O_RDWR | O_CLOEXEC));
        m_box.Write("bin/xdg-open",
                    "#!/bin/sh\nprintf '%s\\n' \"$#\" \"$@\" > " + m_box.Bytes("pipe") + "\n");
        chmod(m_box.Bytes("bin/xdg-open").constData(), 0755);
    }

    QByteArray Received() const {
        QByteArray text;
        char buffer[4096];
        pollfd request{m_pipe.Number(), POLLIN, 0};
        while (text.count('\n') < 2 && poll(&request, 1, 30'000) == 1) {
            text.append(buffer, read(m_pipe.Number(), buffer, sizeof buffer));
        }
        return text;
    }
};

} // namespace

TEST_F(Opener, GetsOneAddressWhateverTheNameHolds) {
    const std::pair<QByteArray, QByteArray> cases[] = {
        {"letter.eml", "letter.eml"},
        {"-rf $(touch x); `y`", "-rf%20%24%28touch%20x%29%3B%20%60y%60"},
        {"a%20b#c?d\\e", "a%2520b%23c%3Fd%5Ce"},
        {"latin \xFC", "latin%20%FC"},
        {"gr\xC3\xBCn\n", "gr%C3%BCn%0A"},
    };
    for (const auto& [name, encoded] : cases) {
        m_box.Write(name);
        ASSERT_TRUE(OpenWithDesktop(m_box.Path(name)).Ok());
        EXPECT_EQ(Received(), "1\nfile://" + m_box.Bytes(encoded) + "\n");
    }
    ASSERT_TRUE(OpenContainingFolder(m_box.Path("bin/xdg-open")).Ok());
    EXPECT_EQ(Received(), "1\nfile://" + m_box.Bytes("bin") + "\n");
    ASSERT_TRUE(OpenMailTo(QStringLiteral("mailto:anna@example.org?subject=x")).Ok());
    EXPECT_EQ(Received(), "1\nmailto:anna@example.org?subject=x\n");
    ASSERT_TRUE(OpenWebPage(QStringLiteral("https://example.org/a?b=c")).Ok());
    EXPECT_EQ(Received(), "1\nhttps://example.org/a?b=c\n");
}

TEST_F(Opener, RefusalsAreTold) {
    EXPECT_EQ(OpenWithDesktop(m_box.Path("none")).code, ENOENT);
    EXPECT_EQ(OpenMailTo(QStringLiteral("file:///etc/passwd")).code, EINVAL);
    EXPECT_EQ(OpenMailTo(QStringLiteral("mailto:a b")).code, EINVAL);
    EXPECT_EQ(OpenWebPage(QStringLiteral("file:///etc/passwd")).code, EINVAL);
    EXPECT_EQ(OpenWebPage(QStringLiteral("https://a b")).code, EINVAL);
    const Variable nowhere("PATH", m_box.Bytes("none"));
    m_box.Write("file");
    const SystemError error = OpenWithDesktop(m_box.Path("file"));
    EXPECT_EQ(error.code, ENOENT);
    EXPECT_TRUE(error.text.contains(QStringLiteral("xdg-open")));
}
