// Runs a search and shows what comes of it.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/TextSearch.h"

#include "core/Dialogue.h"
#include "core/Events.h"
#include "core/Failure.h"
#include "core/Messages.h"
#include "core/windows/FrmAttesa.h"
#include "search/RequestMessage.h"
#include "search/TextQuery.h"
#include "search/windows/frmSearchResult.h"

#include <QLineEdit>

namespace velmora {

namespace {

constexpr int kUnableToContinue = 115;
constexpr int kInformation = 116;
constexpr int kNoMatch = 183;

// A person can do something about these; any other fault is a failure to report.
bool IsExpected(engine::IndexFault fault) {
    return fault == engine::IndexFault::Request || fault == engine::IndexFault::Missing;
}

// Nothing when the failure was reported and cancelled.
std::optional<engine::SearchResults> Search(const TextSearchHost& host, const QString& folder,
                                            bool includeMail) {
    return Guard("FrmMain", "ExecuteSearch", [&] {
        QString request = host.txtRicerca->text();
        engine::SearchResults results;
        ExecuteSearch(request, folder, includeMail, host.Synonyms, results);
        if (results.fault && !IsExpected(*results.fault)) {
            throw Error(static_cast<int>(*results.fault), RequestMessage(results));
        }
        return std::optional(std::move(results));
    });
}

void TellFault(const TextSearchHost& host, const engine::SearchResults& results) {
    if (results.fault != engine::IndexFault::Request) {
        Tell(RequestMessage(results), GetMessage(kInformation));
        return;
    }
    Tell(RequestMessage(results), GetMessage(kUnableToContinue), Icon::Exclamation);
    QLineEdit& box = *host.txtRicerca;
    box.setFocus();
    box.setCursorPosition(CaretPosition(box.text(), results.position));
}

} // namespace

void TextSearch(const TextSearchHost& host, const QString& folder, bool includeMail) {
    if (host.CloseFilter) {
        host.CloseFilter();
    }
    auto wait = std::make_unique<FrmAttesa>(host.window);
    wait->setWindowModality(Qt::ApplicationModal); // a second Enter must not search meanwhile
    wait->show();
    YieldToEvents();
    YieldToEvents();
    std::optional<engine::SearchResults> results = Search(host, folder, includeMail);
    if (!results || results->fault || results->items.empty()) {
        wait.reset();
        CurrentDialogue().SetPointer(Pointer::Default);
        if (results && results->fault) {
            TellFault(host, *results);
        } else if (results) {
            Tell(GetMessage(kNoMatch), GetMessage(kInformation));
        }
        return;
    }
    QString target;
    {
        frmSearchResult window(*std::move(results), folder, host.txtRicerca->text(), host.window);
        window.OnActivate = [&wait] { wait.reset(); };
        window.exec();
        target = window.LocateTarget;
    }
    if (!target.isEmpty() && host.FindElement) {
        host.FindElement(target);
    }
    if (host.window != nullptr) {
        host.window->update();
    }
    YieldToEvents();
}

} // namespace velmora
