// Message boxes, folder chooser, hints, pointer and error reports as windows.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/windows/WindowDialogue.h"

#include "core/MessageIds.h"
#include "core/Messages.h"
#include "core/windows/FrmFTMessage.h"
#include "core/windows/FrmReportErr.h"
#include "platform/LogicalPath.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>

namespace velmora {

namespace {

QMessageBox::Icon BoxIcon(Icon icon) {
    switch (icon) {
    case Icon::Information:
        return QMessageBox::Information;
    case Icon::Question:
        return QMessageBox::Question;
    case Icon::Exclamation:
        return QMessageBox::Warning;
    case Icon::Critical:
        return QMessageBox::Critical;
    case Icon::None:
        break;
    }
    return QMessageBox::NoIcon;
}

void Fill(QMessageBox& box, const QString& text, const QString& title, Icon icon) {
    box.setTextFormat(Qt::PlainText); // names of files come in here
    box.setText(text);
    box.setWindowTitle(title);
    box.setIcon(BoxIcon(icon));
}

} // namespace

void WindowDialogue::Tell(const QString& text, const QString& title, Icon icon) {
    QMessageBox box(QApplication::activeWindow());
    Fill(box, text, title, icon);
    box.addButton(GetMessage(1000), QMessageBox::AcceptRole)->setObjectName(u"cmdOk");
    box.exec();
}

Answer WindowDialogue::Ask(const QString& text, const QString& title, Icon icon) {
    QMessageBox box(QApplication::activeWindow());
    Fill(box, text, title, icon);
    QPushButton* yes = box.addButton(GetMessage(kYes), QMessageBox::YesRole);
    QPushButton* no = box.addButton(GetMessage(kNo), QMessageBox::NoRole);
    yes->setObjectName(u"cmdYes");
    no->setObjectName(u"cmdNo");
    box.setEscapeButton(no);
    // A question that warns is not to be answered by a hasty Enter.
    box.setDefaultButton(icon == Icon::Question || icon == Icon::None ? yes : no);
    box.exec();
    return box.clickedButton() == yes ? Answer::Yes : Answer::No;
}

QString WindowDialogue::BrowseForFolder(const QString& prompt, const QString& start) {
    const QString chosen =
        QFileDialog::getExistingDirectory(QApplication::activeWindow(), prompt,
                                          start.isEmpty() ? QString() : platform::ToMachine(start));
    return chosen.isEmpty() ? QString() : platform::ToLogical(chosen);
}

bool WindowDialogue::ShowHint(int pictureId, const QString& text, const QString& title) {
    FrmFTMessage window(QApplication::activeWindow());
    window.SetMessage(pictureId, text, title);
    window.exec();
    return window.DontShowAgain();
}

void WindowDialogue::SetPointer(Pointer pointer) {
    while (QApplication::overrideCursor()) {
        QApplication::restoreOverrideCursor();
    }
    if (pointer == Pointer::Hourglass) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    }
}

Pointer WindowDialogue::CurrentPointer() const {
    return QApplication::overrideCursor() ? Pointer::Hourglass : Pointer::Default;
}

bool WindowReporter::Retry(const QString& report) {
    FrmReportErr window(QApplication::activeWindow());
    window.SetReport(report);
    window.exec();
    return window.Retry;
}

} // namespace velmora
