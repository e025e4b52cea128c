// Takes the names of documents apart.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/DocumentName.h"

#include <QStringList>
#include <array>

namespace velmora {

namespace {

// What the engine puts for marks inside names.
QString Readable(QString name) {
    name.replace(u'\\', u'/');
    name.replace(QChar(0xF03E), u'>');
    name.replace(QChar(0xF07C), u'|');
    name.replace(QChar(0xF05C), u'\\');
    return name;
}

bool IsMailStore(QStringView name) {
    static constexpr std::array kEndings = {u".DBX", u".MBX", u".EML"};
    for (const char16_t* ending : kEndings) {
        if (name.endsWith(ending, Qt::CaseInsensitive)) {
            return true;
        }
    }
    return false;
}

// step: what stands behind a ">". Its mark ends with a "|"; the marks of mail stores may hold a
// subject too, and end with the last brace.
MemberStep TakeStep(QStringView step, QStringView container) {
    const bool inStore = !step.startsWith(u'{') && IsMailStore(container);
    const qsizetype bar = inStore ? step.lastIndexOf(u'|') : step.indexOf(u'|');
    const qsizetype brace = step.lastIndexOf(u'}');
    MemberStep member;
    member.IntoMail = inStore || step.startsWith(u'{');
    const qsizetype end = inStore && brace > bar ? brace + 1 : bar >= 0 ? bar : brace + 1;
    const bool closesWithBar = end == bar;
    member.mark = step.left(end).toString();
    member.name = Readable(step.mid(closesWithBar ? end + 1 : end).toString());
    return member;
}

} // namespace

DocumentName DocumentName::OfFileName(const QString& fileName) {
    return OfSpelling(fileName, fileName);
}

DocumentName DocumentName::OfSpelling(const QString& fileName, const QString& spelling) {
    const auto steps = fileName.count(u'>');
    const bool fits = !spelling.isEmpty() && spelling.count(u'>') >= steps;
    const QStringList parts = (fits ? spelling : fileName).split(u'>');
    const auto fileParts = parts.size() - steps;
    DocumentName name;
    name.file = parts.first(fileParts).join(u'>');
    QStringView container = name.file;
    for (qsizetype part = fileParts; part < parts.size(); ++part) {
        name.members.push_back(TakeStep(parts[part], container));
        container = parts[part];
    }
    return name;
}

int DocumentName::MailStep() const {
    for (int step = static_cast<int>(members.size()) - 1; step >= 0; --step) {
        if (members[static_cast<std::size_t>(step)].IntoMail) {
            return step;
        }
    }
    return -1;
}

QString DocumentName::MailMark() const {
    const int step = MailStep();
    return step < 0 ? QString() : members[static_cast<std::size_t>(step)].mark;
}

QString DocumentName::NameOfMail() const {
    const int step = MailStep();
    return step <= 0 ? file : members[static_cast<std::size_t>(step) - 1].name;
}

QString DocumentName::Archive() const {
    const auto inMail = static_cast<std::size_t>(MailStep() + 1); // steps up to and into the mail
    if (inMail == members.size()) {
        return {};
    }
    return inMail == 0 ? file : members[inMail - 1].name;
}

bool VerifyIfIsAttach(const QString& name) {
    for (auto at = name.size() - 1; at >= 0; --at) {
        if (name[at] == u':') {
            return true;
        }
        if (name[at] == u'{') {
            return false;
        }
    }
    return false;
}

} // namespace velmora
