// Signal handlers.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "cli/Signals.h"

#include <array>
#include <csignal>

namespace velmora {

namespace {

volatile std::sig_atomic_t stopCame = 0;

constexpr std::array kStopping{SIGINT, SIGTERM, SIGHUP};

void NoteStop(int) {
    stopCame = 1;
}

void Install(void (*handler)(int), int flags) {
    for (const int signal : kStopping) {
        struct sigaction present {};
        ::sigaction(signal, nullptr, &present);
        if (present.sa_handler == SIG_IGN) {
            continue; // as under nohup
        }
        struct sigaction action {};
        action.sa_handler = handler;
        action.sa_flags = flags;
        ::sigemptyset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    }
}

} // namespace

StopSignals::StopSignals() {
    Install(&NoteStop, static_cast<int>(SA_RESETHAND) | SA_RESTART);
}

StopSignals::~StopSignals() {
    Install(SIG_DFL, 0);
}

bool StopSignals::Came() {
    return stopCame != 0;
}

void IgnoreClosedPipes() {
    std::signal(SIGPIPE, SIG_IGN);
}

} // namespace velmora
