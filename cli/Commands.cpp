// The table of commands, and the run of one of them.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Commands.h"

#include "cli/Ending.h"
#include "cli/Help.h"
#include "cli/MessageIds.h"
#include "cli/Session.h"
#include "core/Messages.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <exception>
#include <iterator>
#include <vector>

namespace velmora {

namespace {

constexpr std::array kInitOperands{"DIR"};
constexpr std::array kFoldersOperands{"list | add | remove", "PATH"};
constexpr std::array kPaths{"PATH"};
constexpr std::array kQuery{"QUERY"};
constexpr std::array kFile{"FILE"};
constexpr std::array kPrefix{"PREFIX"};

constexpr std::array kIndexOptions{
    OptionSpec{"--rebuild", 0, false}, OptionSpec{"--retry", 0, false},
    OptionSpec{"--mail", 0, false},    OptionSpec{"--problems", 0, false},
    OptionSpec{"--counts", 0, false},  OptionSpec{"--json", 0, false},
    OptionSpec{"--quiet", 'q', false}, OptionSpec{"--verbose", 'v', false},
};
constexpr std::array kSearchOptions{
    OptionSpec{"--folder", 0, true},    OptionSpec{"--exclude-mail", 0, false},
    OptionSpec{"--synonyms", 0, false}, OptionSpec{"--limit", 0, true},
    OptionSpec{"--json", 0, false},
};
constexpr std::array kShowOptions{
    OptionSpec{"--query", 0, true},
    OptionSpec{"--html", 0, false},
    OptionSpec{"--text", 0, false},
};
constexpr std::array kWordsOptions{OptionSpec{"--json", 0, false}};

constexpr std::array kCommands{
    Command{{"init", {}, kInitOperands}, kHelpInit, &RunInit},
    Command{{"folders", {}, kFoldersOperands, true}, kHelpFolders, &RunFolders},
    Command{{"index", kIndexOptions, kPaths, true}, kHelpIndex, &RunIndex},
    Command{{"search", kSearchOptions, kQuery}, kHelpSearch, &RunSearch},
    Command{{"show", kShowOptions, kFile}, kHelpShow, &RunShow},
    Command{{"words", kWordsOptions, kPrefix}, kHelpWords, &RunWords},
};

const std::vector<CommandSyntax>& Syntaxes() {
    static const std::vector<CommandSyntax> syntaxes = [] {
        std::vector<CommandSyntax> all;
        std::transform(kCommands.begin(), kCommands.end(), std::back_inserter(all),
                       [](const Command& command) { return command.syntax; });
        return all;
    }();
    return syntaxes;
}

// Null: the program's own help is meant.
const Command* CommandNamed(const QByteArray& name) {
    const auto found =
        std::find_if(kCommands.begin(), kCommands.end(),
                     [&](const Command& command) { return name == command.syntax.name; });
    return found == kCommands.end() ? nullptr : &*found;
}

int HelpOf(const Command* command) {
    return command ? command->help : kHelp;
}

int RunCommand(const Command& command, const Arguments& arguments, Output& output) {
    CommandReporter reporter(output);
    CommandDialogue dialogue(output);
    const ScopedReporter reportThere(reporter);
    const ScopedDialogue askThere(dialogue);
    const int code = command.run(arguments, output);
    return reporter.Failed() && code != kCancelled ? kUnusable : code;
}

int Parsed(const QByteArrayList& words, const Command*& command, Output& output) {
    ChooseLanguage(words);
    for (const QByteArray& word : words) { // for a usage line before the line is understood
        if (!command && !word.startsWith('-')) {
            command = CommandNamed(word);
        }
    }
    const Arguments arguments = Arguments::Parse(words, Syntaxes());
    command = arguments.Command() ? CommandNamed(arguments.Command()->name) : nullptr;
    if (arguments.Has("--version")) {
        output.Line(QString::fromLatin1("velmora " VELMORA_VERSION));
        return kDone;
    }
    if (arguments.Has("--help")) {
        PrintHelp(HelpOf(command), output);
        return kDone;
    }
    return RunCommand(*command, arguments, output);
}

int Guarded(const QByteArrayList& words, Output& output) {
    const Command* command = nullptr;
    try {
        return Parsed(words, command, output);
    } catch (const UsageError& error) {
        PrintUsage(error, command ? command->syntax.name : nullptr, HelpOf(command), output);
        return kUsage;
    } catch (const CommandError& error) {
        if (!error.text.isEmpty()) {
            output.Complain(error.text);
        }
        return error.code;
    } catch (const Error& error) {
        output.Complain(error.Text());
    } catch (const std::exception& error) {
        output.Complain(QString::fromUtf8(error.what()));
    }
    return kUnusable;
}

} // namespace

int RunCommandLine(const QByteArrayList& words, Output& output) {
    const int code = Guarded(words, output);
    output.ClearProgress();
    const int failure = output.Flush();
    if (failure == EPIPE) {
        return kOutputClosed; // whoever read has seen enough
    }
    if (failure != 0) {
        output.Complain(
            GetMessage(kOutputFailed, {QString::fromLocal8Bit(std::strerror(failure))}));
        return kUnusable;
    }
    return code;
}

} // namespace velmora
