// Writing to the two streams.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Output.h"

#include "platform/Names.h"

#include <cerrno>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr qsizetype kKeptBack = 64 * 1024;

// 0, or the error number.
int WriteAll(int stream, const QByteArray& bytes) {
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(stream, bytes.constData() + done,
                                        static_cast<std::size_t>(bytes.size() - done));
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        done += written < 0 ? 0 : written;
    }
    return 0;
}

QString Harmless(QString text) {
    for (QChar& character : text) {
        if (character.category() == QChar::Other_Control && character != u'\n' &&
            character != u'\t') {
            character = u'?';
        }
    }
    return text;
}

// Names with bytes that are no UTF-8 keep them; text that is no name at all stays text.
QByteArray Bytes(const QString& text) {
    const QByteArray bytes = platform::EncodeName(text);
    return bytes.isEmpty() ? text.toUtf8() : bytes;
}

int Columns() {
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace

Output::Output()
    : m_outputIsTerminal(::isatty(STDOUT_FILENO) == 1),
      m_errorIsTerminal(::isatty(STDERR_FILENO) == 1) {}

void Output::Line(const QString& text) {
    Append(Bytes(m_outputIsTerminal ? Harmless(text) : text) + '\n');
}

void Output::Utf8(const QString& text) {
    Append((m_outputIsTerminal ? Harmless(text) : text).toUtf8());
}

void Output::Append(const QByteArray& bytes) {
    m_waiting += bytes;
    if (m_waiting.size() > kKeptBack) {
        (void)Flush();
    }
}

int Output::Flush() {
    if (m_failure == 0) {
        m_failure = WriteAll(STDOUT_FILENO, m_waiting);
    }
    m_waiting.clear();
    return m_failure;
}

void Output::Complain(const QString& text) {
    Note(u"velmora: "_s + text);
}

void Output::Note(const QString& text) {
    (void)Flush();
    ClearProgress();
    ToError(Bytes(m_errorIsTerminal ? Harmless(text) : text) + '\n');
}

void Output::ShowProgress(const QString& text) {
    if (!m_errorIsTerminal) {
        return;
    }
    QString line = Harmless(text).replace(u'\n', u'?').replace(u'\t', u' ');
    const int width = Columns() - 1; // the last column would wrap
    if (line.size() > width) {
        line = line.left(width - 1) + u'…';
    }
    ToError("\r\033[K" + Bytes(line));
    m_progressShown = true;
}

void Output::ClearProgress() {
    if (m_progressShown) {
        m_progressShown = false;
        ToError("\r\033[K");
    }
}

// A standard error that cannot be written has nobody to tell it to.
void Output::ToError(const QByteArray& bytes) {
    (void)WriteAll(STDERR_FILENO, bytes);
}

} // namespace velmora
