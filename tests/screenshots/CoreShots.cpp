// The windows of core/, and the boxes that all folders share.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/Dialogue.h"
#include "core/Failure.h"
#include "core/Help.h"
#include "core/Messages.h"
#include "core/windows/FrmAttesa.h"
#include "core/windows/FrmFTMessage.h"
#include "core/windows/FrmHelp.h"
#include "core/windows/FrmReportErr.h"
#include "core/windows/FrmSplash.h"
#include "core/windows/frmQuickStart.h"
#include "tests/screenshots/Shots.h"

#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

void TakeHelp(const QString& page, const QString& words, const Grab& grab) {
    FrmHelp window(Help(QStringLiteral(VELMORA_SOURCE_DIR "/docs/help"), CurrentLanguage()));
    window.setAttribute(Qt::WA_DeleteOnClose, false);
    window.ShowPage(page);
    window.findChild<QLineEdit*>(u"txtSearch"_s)->setText(words);
    window.show();
    grab(window);
}

void TakeHint(int pictureId, int textId, const Grab& grab) {
    FrmFTMessage window;
    window.SetMessage(pictureId, GetMessage(textId), GetMessage(textId + 1));
    window.show();
    grab(window);
}

} // namespace

QList<Shot> CoreShots() {
    return {
        {u"FrmSplash"_s,
         [](Stage&, const Grab& grab) {
             FrmSplash window(FrmSplash::Use::Start);
             window.show();
             grab(window);
         }},
        {u"FrmSplash-about"_s,
         [](Stage&, const Grab& grab) {
             FrmSplash window(FrmSplash::Use::AboutBox);
             window.show();
             grab(window);
         }},
        {u"frmQuickStart"_s, TakePlain<frmQuickStart>},
        {u"FrmAttesa"_s, TakePlain<FrmAttesa>},
        {u"FrmFTMessage-pdf"_s, [](Stage&, const Grab& grab) { TakeHint(106, 2000, grab); }},
        {u"FrmFTMessage-ocr"_s, [](Stage&, const Grab& grab) { TakeHint(107, 2002, grab); }},
        {u"FrmReportErr"_s,
         [](Stage&, const Grab& grab) {
             TakeModal(
                 [] {
                     (void)ReportError(ReportText(u"/home/anna/Docs/list.xml: Permission denied"_s,
                                                  13, 120, u"CommonFunctions"_s,
                                                  u"XMLSaveSettings"_s));
                 },
                 grab);
         }},
        {u"box-tell"_s,
         [](Stage&, const Grab& grab) {
             TakeModal([] { Tell(GetMessage(277), GetMessage(82), Icon::Exclamation); }, grab);
         }},
        {u"box-ask"_s,
         [](Stage&, const Grab& grab) {
             TakeModal([] { (void)Ask(GetMessage(164), GetMessage(68)); }, grab);
         }},
        {u"FrmHelp"_s, [](Stage&, const Grab& grab) { TakeHelp(u"search-language"_s, {}, grab); }},
        {u"FrmHelp-search"_s,
         [](Stage&, const Grab& grab) { TakeHelp(u"index"_s, u"index"_s, grab); }},
    };
}

} // namespace velmora
