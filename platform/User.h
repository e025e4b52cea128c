// Who uses the machine: account, computer, a second copy of the program, language and dates.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include "platform/Files.h"

#include <QChar>
#include <QString>

namespace platform {

struct Logon {
    QString user;   ///< empty when the system knows no account
    QString domain; ///< empty when the machine knows none
};

/// The parts of an account name: "DOMAIN\user" and
/// "user@domain" as domain members have it, or a bare "user".
[[nodiscard]] Logon SplitAccountName(const QString& account);

/// The user that this process runs for. Where the account name
/// tells no domain, the machine's NIS domain.
[[nodiscard]] Logon CurrentLogon();

/// The name of this machine without its DNS domain; empty when it has none.
[[nodiscard]] QString ComputerName();

/// Finds out whether another copy of an executable runs for this user, and makes this one count as
/// running for as long as the object lives, a kill included. Copies that start at the same moment
/// see each other: exactly one of them is the first.
class SingleCopy {
  public:
    /// `executable` is the key, usually the path of the program; `folder` holds the lock file: by
    /// default the user's runtime folder, or TemporaryFolder() where there is none.
    explicit SingleCopy(const QString& executable = OwnExecutable(), const QString& folder = {});

    /// True when another copy was running at the moment of construction. False, too, when no lock
    /// file could be made: better a second copy than none.
    [[nodiscard]] bool OthersRunning() const { return m_othersRunning; }

    /// The machine path of the running executable.
    [[nodiscard]] static QString OwnExecutable();

  private:
    FileDescriptor m_lock;
    bool m_othersRunning = false;
};

/// The Windows locale id of a POSIX locale name such as "it_CH.UTF-8" (2064). A country without an
/// id of its own gets its language's main one, all English is 1033, and 0 stands for every other
/// language and for "C".
[[nodiscard]] unsigned LocaleIdOf(const QString& localeName);

/// The locale id of the language that the user asked the desktop for: LC_ALL, LC_MESSAGES, LANG.
[[nodiscard]] unsigned UserLocaleId();

enum class DateOrder { MonthFirst = 0, DayFirst = 1, YearFirst = 2 };

struct DateForm {
    DateOrder order = DateOrder::MonthFirst;
    QChar separator = u'/';
};

/// How short dates are written in a POSIX locale; month first
/// with "/" for "C" and what is not known.
[[nodiscard]] DateForm DateFormOf(const QString& localeName);

/// How the user's system writes short dates: LC_ALL, LC_TIME, LANG. Independent of UserLocaleId.
[[nodiscard]] DateForm UserDateForm();

} // namespace platform
