// The process-wide variables.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Globals.h"

#include "platform/Folders.h"
#include "platform/LogicalPath.h"

namespace velmora {

namespace {

// The pointer is what makes the set exchangeable; nothing else in the program is global.
Globals*& InForce() {
    static Globals processWide;
    static Globals* inForce = &processWide;
    return inForce;
}

} // namespace

Globals& Program() {
    return *InForce();
}

QString gProgramPath() {
    return platform::WithoutBackslash(platform::ToLogical(platform::ProgramFolder()));
}

ScopedGlobals::ScopedGlobals() : m_covered(InForce()) {
    m_own.reporter = m_covered->reporter;
    m_own.dialogue = m_covered->dialogue;
    m_own.yieldToEvents = m_covered->yieldToEvents;
    m_own.mainCaption = m_covered->mainCaption;
    InForce() = &m_own;
}

ScopedGlobals::~ScopedGlobals() {
    InForce() = m_covered;
}

} // namespace velmora
