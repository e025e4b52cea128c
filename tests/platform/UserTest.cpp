// The user, a second copy of the program, locales.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "platform/User.h"

#include "tests/platform/TestSupport.h"

#include <csignal>

using namespace platform;
using testing_support::InOtherProcess;
using testing_support::Sandbox;
using testing_support::Variable;

namespace {

const QString kProgram = QStringLiteral("/opt/app/program");

/// A copy of the program in a process of its own: tells what it found and stays until it is ended.
class OtherCopy {
  public:
    OtherCopy(const QString& program, const QString& folder, int startLine = -1) {
        int answer[2];
        EXPECT_EQ(pipe(answer), 0);
        m_process = fork();
        if (m_process == 0) {
            char go = 0;
            if (startLine >= 0 && read(startLine, &go, 1) != 1) {
                _exit(1);
            }
            const SingleCopy copy(program, folder);
            const char found = copy.OthersRunning() ? 'y' : 'n';
            _exit(write(answer[1], &found, 1) == 1 ? pause() : 1);
        }
        close(answer[1]);
        m_answer = FileDescriptor(answer[0]);
    }
    ~OtherCopy() { Kill(); }
    OtherCopy(const OtherCopy&) = delete;
    OtherCopy& operator=(const OtherCopy&) = delete;

    char FoundOthers() const {
        char found = '?';
        return read(m_answer.Number(), &found, 1) == 1 ? found : '?';
    }
    void Kill() {
        if (m_process > 0) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
            m_process = -1;
        }
    }

  private:
    pid_t m_process = -1;
    FileDescriptor m_answer;
};

} // namespace

TEST(SingleCopy, SeesACopyInAnotherProcessUntilItEnds) {
    const Sandbox box;
    OtherCopy first(kProgram, box.Path());
    EXPECT_EQ(first.FoundOthers(), 'n');
    {
        const SingleCopy second(kProgram, box.Path());
        EXPECT_TRUE(second.OthersRunning());
        EXPECT_FALSE(SingleCopy(QStringLiteral("/opt/app/another"), box.Path()).OthersRunning());
        // A copy that was let in beside the first one still counts when the first has gone.
        first.Kill();
        EXPECT_TRUE(SingleCopy(kProgram, box.Path()).OthersRunning());
    }
    EXPECT_FALSE(SingleCopy(kProgram, box.Path()).OthersRunning());
}

TEST(SingleCopy, OfCopiesThatStartTogetherOneIsTheFirst) {
    const Sandbox box;
    for (int round = 0; round < 20; ++round) {
        int startLine[2];
        ASSERT_EQ(pipe(startLine), 0);
        std::vector<std::unique_ptr<OtherCopy>> copies;
        for (int i = 0; i < 6; ++i) {
            copies.push_back(std::make_unique<OtherCopy>(kProgram, box.Path(), startLine[0]));
        }
        ASSERT_EQ(write(startLine[1], "gogogo", 6), 6);
        int firsts = 0;
        for (const auto& copy : copies) {
            const char found = copy->FoundOthers();
            EXPECT_NE(found, '?');
            firsts += found == 'n';
        }
        EXPECT_EQ(firsts, 1);
        // Each of them counts as running, also the one that looked round last.
        while (!copies.empty()) {
            EXPECT_TRUE(SingleCopy(kProgram, box.Path()).OthersRunning());
            copies.erase(copies.begin() + round % static_cast<int>(copies.size()));
        }
        EXPECT_FALSE(SingleCopy(kProgram, box.Path()).OthersRunning());
        close(startLine[0]);
        close(startLine[1]);
    }
}

TEST(SingleCopy, WithoutALockFileTheProgramStarts) {
    const Sandbox box;
    const SingleCopy one(kProgram, box.Path("none"));
    EXPECT_FALSE(one.OthersRunning());
    EXPECT_FALSE(SingleCopy(kProgram, box.Path("none")).OthersRunning());
    EXPECT_TRUE(SingleCopy::OwnExecutable().endsWith(QStringLiteral("platform_test")));
}

TEST(User, AccountNamesOfDomainMembers) {
    const struct {
        QString account, user, domain;
    } cases[] = {
        {QStringLiteral("anna"), QStringLiteral("anna"), QString()},
        {QStringLiteral("OFFICE\\anna"), QStringLiteral("anna"), QStringLiteral("OFFICE")},
        {QStringLiteral("anna@office.example"), QStringLiteral("anna"),
         QStringLiteral("office.example")},
        {QString(), QString(), QString()},
    };
    for (const auto& c : cases) {
        const Logon logon = SplitAccountName(c.account);
        EXPECT_EQ(logon.user, c.user);
        EXPECT_EQ(logon.domain, c.domain);
    }
    EXPECT_FALSE(CurrentLogon().user.isEmpty());
    EXPECT_NE(CurrentLogon().domain, QStringLiteral("(none)"));
    EXPECT_FALSE(ComputerName().contains(u'.'));
}

TEST(User, LocaleIdsOfTheFiveLanguages) {
    const std::pair<const char*, unsigned> cases[] = {
        {"it_IT.UTF-8", 1040},
        {"it_CH", 2064},
        {"it_SM", 1040},
        {"IT", 1040},
        {"de_DE@euro", 1031},
        {"de_CH", 2055},
        {"de_AT.utf8", 3079},
        {"de_LU", 4103},
        {"de_LI", 5127},
        {"de_BE", 1031},
        {"fr_FR", 1036},
        {"fr_BE", 2060},
        {"fr_CA", 3084},
        {"fr_CH", 4108},
        {"fr_LU", 5132},
        {"fr_MC", 6156},
        {"fr_SN", 1036},
        {"es_ES", 3082},
        {"es_ES@tradicional", 1034},
        {"es_MX", 2058},
        {"es_US", 21514},
        {"es_CU.UTF-8", 3082},
        {"en_US.UTF-8", 1033},
        {"en_GB", 1033},
        {"ja_JP", 0},
        {"C", 0},
        {"C.UTF-8", 0},
        {"POSIX", 0},
        {"", 0},
        {"eng", 0},
    };
    for (const auto& [name, id] : cases) {
        EXPECT_EQ(LocaleIdOf(QString::fromLatin1(name)), id) << name;
    }
}

TEST(User, LanguageAndDatesFollowTheirOwnVariables) {
    const Variable all("LC_ALL", "");
    const Variable messages("LC_MESSAGES", "it_IT.UTF-8");
    const Variable time("LC_TIME", "en_US.UTF-8");
    const Variable lang("LANG", "de_DE.UTF-8");
    EXPECT_EQ(UserLocaleId(), 1040u);
    EXPECT_EQ(UserDateForm().order, DateOrder::MonthFirst);
    {
        const Variable noMessages("LC_MESSAGES", "");
        EXPECT_EQ(UserLocaleId(), 1031u);
    }
    const Variable over("LC_ALL", "fr_CH.UTF-8");
    EXPECT_EQ(UserLocaleId(), 4108u);
    EXPECT_EQ(UserDateForm().order, DateOrder::DayFirst);
}

TEST(User, FormsOfDates) {
    const struct {
        const char* name;
        DateOrder order;
        QChar separator;
    } cases[] = {
        {"en_US.UTF-8", DateOrder::MonthFirst, u'/'},
        {"it_IT", DateOrder::DayFirst, u'/'},
        {"de_DE@euro", DateOrder::DayFirst, u'.'},
        {"sv_SE", DateOrder::YearFirst, u'-'},
        {"hu_HU", DateOrder::YearFirst, u'.'},
        {"bg_BG", DateOrder::DayFirst, u'.'},
        {"ja_JP", DateOrder::YearFirst, u'/'},
        {"nl_NL", DateOrder::DayFirst, u'-'},
        {"C.UTF-8", DateOrder::MonthFirst, u'/'},
        {"POSIX", DateOrder::MonthFirst, u'/'},
        {"", DateOrder::MonthFirst, u'/'},
        {"no such", DateOrder::MonthFirst, u'/'},
    };
    for (const auto& c : cases) {
        const DateForm form = DateFormOf(QString::fromLatin1(c.name));
        EXPECT_EQ(form.order, c.order) << c.name;
        EXPECT_EQ(form.separator, c.separator) << c.name;
    }
}
