// Asks for the name of a new document.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class FrmNameFile;
}

namespace velmora {

class FrmNameFile : public QDialog {
    Q_OBJECT

  public:
    // `folder`: logical path of the folder that the document is to lie in.
    explicit FrmNameFile(const QString& folder, QWidget* parent = nullptr);
    ~FrmNameFile() override;

    // Out: the name with its ending; empty when the person cancelled.
    QString FileName;

  private:
    void cmdOk_Click();

    std::unique_ptr<Ui::FrmNameFile> m_ui;
    QString m_folder;
};

} // namespace velmora
