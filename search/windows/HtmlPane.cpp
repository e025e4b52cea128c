// Loading, showing, walking.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/HtmlPane.h"

#include "core/Failure.h"
#include "core/Messages.h"
#include "core/windows/FrmAttesa.h"
#include "search/windows/PageView.h"

#include <QVBoxLayout>
#include <chrono>

using namespace Qt::StringLiterals;

namespace velmora {

namespace {

constexpr std::chrono::milliseconds kPatience{200};

QWidget* MakeAnimation(QWidget* parent) {
    auto* page = new QWidget(parent);
    auto* layout = new QVBoxLayout(page);
    layout->addWidget(new WaitAnimation(page), 0, Qt::AlignCenter);
    return page;
}

} // namespace

HtmlPane::HtmlPane(QWidget* parent)
    : QStackedWidget(parent), m_web(new PageView(this)), m_animation(MakeAnimation(this)) {
    m_web->setObjectName(u"web"_s);
    m_web->setAccessibleName(GetMessage(92));
    m_animation->setObjectName(u"animation"_s);
    addWidget(m_web);
    addWidget(m_animation);
    m_patience.setSingleShot(true);
    m_patience.setInterval(kPatience);
    connect(&m_patience, &QTimer::timeout, this, [this] { setCurrentWidget(m_animation); });
    connect(&m_loader, &PageLoader::Loaded, this, &HtmlPane::ShowLoaded);
}

void HtmlPane::Show(const ResultRow& row) {
    m_isLoaded = false;
    m_walk.Reset(0);
    m_hitCount = row.HITCOUNT;
    m_patience.start();
    m_job = HtmlConverter(row.OCRFILENAME, row.HITS, row.Spelling);
    m_loader.Load(m_job);
    Q_EMIT Changed();
}

void HtmlPane::ShowLoaded(const engine::ConvertedPage& page) {
    m_patience.stop();
    setCurrentWidget(m_web);
    // After a failure the pane stays on its last content. Retry converts again.
    bool isFirstTry = true;
    m_isLoaded = Attempt("frmSearchResult", "GetHtmlString", [&] {
        m_web->ShowPage(PageOf(std::exchange(isFirstTry, false) ? page : m_job.Execute()));
    });
    m_walk.Reset(m_isLoaded ? m_hitCount : 0);
    Q_EMIT Changed();
}

void HtmlPane::Clear() {
    m_patience.stop();
    m_loader.Forget();
    m_web->ShowPage({});
    setCurrentWidget(m_web);
    m_isLoaded = false;
    m_walk.Reset(0);
    Q_EMIT Changed();
}

void HtmlPane::NextHit() {
    if (m_isLoaded && m_walk.NextHit()) {
        m_web->ShowHit(m_walk.Current());
        Q_EMIT Changed();
    }
}

void HtmlPane::PrevoiusHit() {
    if (m_isLoaded && m_walk.PrevoiusHit()) {
        m_web->ShowHit(m_walk.Current());
        Q_EMIT Changed();
    }
}

} // namespace velmora
