// The error report: its text, Retry, Cancel, failures of the reporter itself, the plain seams.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Failure.h"
#include "core/Events.h"
#include "tests/core/Place.h"
#include "tests/core/Scripted.h"

#include <gtest/gtest.h>

#include <new>
#include <system_error>

using namespace Qt::StringLiterals;

namespace velmora {
namespace {

class FailureTest : public testing::Test {
  protected:
    ScopedGlobals program;
    ScriptedReporter reporter;
    ScriptedDialogue dialogue;
};

TEST_F(FailureTest, ReportHasItsExactForm) {
    EXPECT_EQ(ReportText(u"Table is locked\r\nby anna"_s, 3211, 0, u"ModDb"_s, u"OpenConn"_s),
              u"Unexpected error\r\nTable is locked\r\nby anna (n.3211)\r\n"
              "Error at line  0, module ModDb/OpenConn"_s);
    const int line = __LINE__ + 1;
    Guard("ModDb", "GetRs", [] { throw Error(-7, u"Größe"_s); });
    ASSERT_EQ(reporter.reports.size(), 1);
    EXPECT_EQ(reporter.reports[0], u"Unexpected error\r\nGröße (n.-7)\r\nError at line  "_s +
                                       QString::number(line) + u", module ModDb/GetRs"_s);
    program->gLocaleId = 1031;
    Guard(
        "ModDb", "GetRs", [] { throw Error(1, u"x"_s); }, 12);
    EXPECT_EQ(reporter.reports[1], u"Unerwarteter Fehler\r\nx (n.1)\r\nFehler in Zeile  12, Modul "
                                   "ModDb/GetRs"_s);
}

TEST_F(FailureTest, EveryKindOfFailureIsReportedWithItsNumber) {
    const auto report = [this](auto unit) {
        Guard("M", "P", unit);
        return reporter.reports.takeLast();
    };
    EXPECT_TRUE(report([] { throw std::bad_alloc(); }).contains(u"Not enough memory. (n.12)"_s));
    EXPECT_TRUE(report([] {
                    throw std::system_error(28, std::generic_category(), "db.mdb");
                }).contains(u"db.mdb: No space left on device (n.28)"_s));
    EXPECT_TRUE(report([] { throw std::runtime_error("größer"); }).contains(u"größer (n.0)"_s));
    EXPECT_TRUE(report([] { throw 42; }).contains(u"Error of unknown origin. (n.0)"_s));
}

TEST_F(FailureTest, RetryRunsTheUnitAgainUntilItSucceeds) {
    int tries = 0;
    const auto unit = [&tries] {
        if (++tries < 4) {
            throw Error(tries, u"locked"_s);
        }
        return u"rows"_s;
    };
    for (int i = 0; i < 3; ++i) {
        reporter.Next([] { return true; });
    }
    EXPECT_EQ(Guard("M", "P", unit), u"rows"_s);
    EXPECT_EQ(tries, 4);
    EXPECT_EQ(reporter.reports.size(), 3);
}

TEST_F(FailureTest, CancelLeavesAnEmptyResult) {
    EXPECT_EQ(Guard("M", "P", []() -> int { throw 1; }), 0);
    EXPECT_EQ(Guard("M", "P", []() -> bool { throw 1; }), false);
    EXPECT_TRUE(Guard("M", "P", []() -> QString { throw 1; }).isNull());
    EXPECT_EQ(Guard("M", "P", []() -> std::unique_ptr<int> { throw 1; }), nullptr);
    EXPECT_FALSE(Attempt("M", "P", [] { throw 1; }));
    EXPECT_TRUE(Attempt("M", "P", [] {}));
    // Nobody above hears of it: the caller goes on with the empty result.
    EXPECT_EQ(Guard("M", "Outer", [] { return Guard("M", "Inner", []() -> int { throw 1; }) + 5; }),
              5);
    EXPECT_TRUE(reporter.reports.last().endsWith(u"M/Inner"_s));
}

TEST_F(FailureTest, PointerIsNormalDuringTheReportAndBackForAnotherTry) {
    dialogue.SetPointer(Pointer::Hourglass);
    Pointer seen = Pointer::Hourglass;
    reporter.Next([&] {
        seen = dialogue.CurrentPointer();
        return true;
    });
    EXPECT_TRUE(ReportError(u"text"_s));
    EXPECT_EQ(seen, Pointer::Default);
    EXPECT_EQ(dialogue.CurrentPointer(), Pointer::Hourglass);
    EXPECT_FALSE(ReportError(u"text"_s));
    EXPECT_EQ(dialogue.CurrentPointer(), Pointer::Default);
}

TEST_F(FailureTest, AFailingReporterIsReportedToItselfOnceAndThenToTheTerminal) {
    const auto fail = []() -> bool { throw Error(5, u"no window"_s); };
    reporter.Next(fail);
    reporter.Next([] { return true; }); // try the report again
    reporter.Next([] { return true; });
    EXPECT_TRUE(ReportError(u"first"_s));
    ASSERT_EQ(reporter.reports.size(), 3);
    EXPECT_TRUE(reporter.reports[1].contains(u"no window (n.5)"_s));
    EXPECT_TRUE(reporter.reports[1].endsWith(u"ErrManager/ReportError"_s));
    EXPECT_EQ(reporter.reports[2], u"first"_s);

    reporter.Next(fail);
    reporter.Next(fail);
    testing::internal::CaptureStderr();
    EXPECT_FALSE(ReportError(u"lost\r\notherwise"_s));
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_NE(printed.find("lost\notherwise\n"), std::string::npos);
    EXPECT_NE(printed.find("no window"), std::string::npos);
}

TEST_F(FailureTest, RefusalsNameThePlaceAsThePersonKnowsIt) {
    Check({}, u"\\x"_s); // nothing went wrong
    try {
        Check(platform::SystemError::Of(ENOENT), u"\\nowhere\\list.xml"_s);
        FAIL();
    } catch (const Error& error) {
        EXPECT_EQ(error.Number(), ENOENT);
        EXPECT_EQ(error.Text(), u"/nowhere/list.xml: No such file or directory"_s);
    }
    EXPECT_EQ(MachinePath(u"\\nowhere\\x"_s), u"/nowhere/x"_s);
    EXPECT_THROW((void)MachinePath(u"Z:\\x"_s), Error);
}

TEST(PlainSeamsTest, WithoutWindowsFailuresArePrintedAndQuestionsAnswered) {
    ScopedGlobals program;
    program->reporter = nullptr;
    program->dialogue = nullptr;
    testing::internal::CaptureStderr();
    EXPECT_EQ(Guard(
                  "M", "P", []() -> int { throw Error(2, u"gone"_s); }, 9),
              0);
    Tell(u"Saved"_s, u"Velmora"_s);
    EXPECT_EQ(Ask(u"Delete?"_s, u"Velmora"_s), Answer::No);
    TextDialogue yes(Answer::Yes);
    {
        const ScopedDialogue inForce(yes);
        EXPECT_EQ(Ask(u"Create?"_s, QString()), Answer::Yes);
    }
    EXPECT_EQ(Ask(u"Again?"_s, QString()), Answer::No);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Unexpected error\ngone (n.2)\nError at line  9, module M/P\n"
              "Velmora: Saved\nVelmora: Delete? [No]\nCreate? [Yes]\nAgain? [No]\n");
    YieldToEvents(); // no application: nothing to give way to
}

TEST(GlobalsTest, ATestsOwnSetCoversAndUncovers) {
    ScopedGlobals outer;
    outer->gUserKey = u"OUTER"_s;
    TextReporter reporter;
    outer->reporter = &reporter;
    int yields = 0;
    {
        ScopedYield yield([&yields] { ++yields; });
        ScopedGlobals inner;
        EXPECT_EQ(Program().gUserKey, QString());
        EXPECT_EQ(Program().reporter, &reporter); // the seams stay
        YieldToEvents();
        Program().gUserKey = u"INNER"_s;
    }
    YieldToEvents();
    EXPECT_EQ(yields, 1);
    EXPECT_EQ(Program().gUserKey, u"OUTER"_s);
}

} // namespace
} // namespace velmora
