// Composes a request from plain boxes and puts it into the search box.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QDialog>
#include <array>
#include <memory>

class QLineEdit;

namespace Ui {
class FrmSearchBuilder;
}

namespace velmora {

// exec() answers Accepted when the request stands in the box in place of its text.
class FrmSearchBuilder : public QDialog {
    Q_OBJECT

  public:
    FrmSearchBuilder(QLineEdit& txtRicerca, QWidget* parent);
    ~FrmSearchBuilder() override;

  private:
    void txtSearch_Change(std::size_t index);
    void cmdok_Click();

    std::unique_ptr<Ui::FrmSearchBuilder> m_ui;
    std::array<QLineEdit*, 4> m_txtSearch{};
    QLineEdit& m_txtRicerca;
};

} // namespace velmora
