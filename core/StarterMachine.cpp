// What the start asks of this machine, where the app does not say otherwise.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "core/CommonFunctions.h"
#include "core/Starter.h"
#include "platform/User.h"

#include <clocale>

namespace velmora {

StarterHost::StarterHost() = default;
StarterHost::~StarterHost() = default;

bool StarterHost::IsSecondCopy() {
    if (!m_copy) {
        m_copy = std::make_unique<platform::SingleCopy>();
    }
    return m_copy->OthersRunning();
}

qint32 StarterHost::GetUserDefaultLCID() {
    return static_cast<qint32>(platform::UserLocaleId());
}

int StarterHost::GetWinVersion() {
    return velmora::GetWinVersion();
}

void StarterHost::GetCurrentLogon(QString& user, QString& domain) {
    velmora::GetCurrentLogon(user, domain);
}

void StarterHost::GetCurrentLogon16(QString& user, QString& domain) {
    user.clear();
    domain.clear();
}

QString StarterHost::GetWksName() {
    return velmora::GetWksName();
}

void StarterHost::RegisterComponent(const QString&) {}

QString StarterHost::PdfViewer() {
    return {};
}

int StarterHost::MajorVersion(const QString&) {
    return -1;
}

QStringList StarterHost::ViewerFolders() {
    return {};
}

void PrepareLocale() {
    std::setlocale(LC_NUMERIC, "C");
}

} // namespace velmora
