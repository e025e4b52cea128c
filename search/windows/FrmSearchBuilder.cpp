// Composes a request from plain boxes.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "search/windows/FrmSearchBuilder.h"

#include "core/Dialogue.h"
#include "core/Messages.h"
#include "core/windows/Captions.h"
#include "search/SearchBuilder.h"
#include "ui_FrmSearchBuilder.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

namespace velmora {

FrmSearchBuilder::FrmSearchBuilder(QLineEdit& txtRicerca, QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmSearchBuilder>()), m_txtRicerca(txtRicerca) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    m_txtSearch = {m_ui->txtSearch_0, m_ui->txtSearch_1, m_ui->txtSearch_2, m_ui->txtSearch_3};
    // The three that exclude each other.
    for (std::size_t index = 0; index < 3; ++index) {
        connect(m_txtSearch.at(index), &QLineEdit::textChanged, this,
                [this, index] { txtSearch_Change(index); });
    }
    m_ui->txtFuzzy->setMaximum(kMostFuzziness);
    connect(m_ui->cmdok, &QPushButton::clicked, this, &FrmSearchBuilder::cmdok_Click);
    connect(m_ui->cmdAnnulla, &QPushButton::clicked, this, &QDialog::reject);
}

FrmSearchBuilder::~FrmSearchBuilder() = default;

void FrmSearchBuilder::txtSearch_Change(std::size_t index) {
    const bool free = m_txtSearch.at(index)->text().isEmpty();
    for (std::size_t other = 0; other < 3; ++other) {
        if (other != index) {
            m_txtSearch.at(other)->clear();
            m_txtSearch.at(other)->setEnabled(free);
        }
    }
}

void FrmSearchBuilder::cmdok_Click() {
    const QString request =
        BuildRequest({m_txtSearch[0]->text(), m_txtSearch[1]->text(), m_txtSearch[2]->text(),
                      m_txtSearch[3]->text(), m_ui->txtFuzzy->value()});
    if (request.isEmpty()) {
        Tell(GetMessage(270), GetMessage(184), Icon::Critical);
        return;
    }
    m_txtRicerca.setText(request);
    accept();
}

} // namespace velmora
