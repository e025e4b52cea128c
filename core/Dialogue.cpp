// Telling and asking through the dialogue in force.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Dialogue.h"

#include "core/Globals.h"
#include "core/MessageIds.h"
#include "core/Messages.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

void Print(const QString& text) {
    const QByteArray bytes = (text + u'\n').toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
}

} // namespace

void TextDialogue::Tell(const QString& text, const QString& title, Icon) {
    Print(title.isEmpty() ? text : title + u": "_s + text);
}

Answer TextDialogue::Ask(const QString& text, const QString& title, Icon icon) {
    const QString answer = GetMessage(m_answer == Answer::Yes ? kYes : kNo).remove(u'&');
    Tell(text + u" ["_s + answer + u']', title, icon);
    return m_answer;
}

QString TextDialogue::BrowseForFolder(const QString& prompt, const QString&) {
    Print(prompt);
    return {};
}

bool TextDialogue::ShowHint(int, const QString&, const QString&) {
    return false;
}

ScopedDialogue::ScopedDialogue(Dialogue& dialogue)
    : m_covered(std::exchange(Program().dialogue, &dialogue)) {}

ScopedDialogue::~ScopedDialogue() {
    Program().dialogue = m_covered;
}

Dialogue& CurrentDialogue() {
    static TextDialogue plain;
    return Program().dialogue ? *Program().dialogue : plain;
}

void Tell(const QString& text, const QString& title, Icon icon) {
    CurrentDialogue().Tell(text, title, icon);
}

Answer Ask(const QString& text, const QString& title, Icon icon) {
    return CurrentDialogue().Ask(text, title, icon);
}

QString BrowseForFolder(const QString& prompt, const QString& start) {
    return CurrentDialogue().BrowseForFolder(prompt, start);
}

Hourglass::Hourglass(Pointer pointer) : m_earlier(CurrentDialogue().CurrentPointer()) {
    CurrentDialogue().SetPointer(pointer);
}

Hourglass::~Hourglass() {
    CurrentDialogue().SetPointer(m_earlier);
}

} // namespace velmora
