// Asks for the name of a new document.
// SPDX-License-Identifier: AGPL-3.0-or-later
#include "mainwindow/windows/FrmNameFile.h"

#include "core/windows/Captions.h"
#include "mainwindow/NameFile.h"
#include "platform/Files.h"
#include "platform/LogicalPath.h"
#include "ui_FrmNameFile.h"

#include <QValidator>
#include <algorithm>

namespace velmora {

namespace {

// Keeps out, typed or pasted, what a name cannot hold.
class NameValidator : public QValidator {
  public:
    using QValidator::QValidator;
    State validate(QString& text, int&) const override {
        return std::all_of(text.begin(), text.end(), TakesCharacter) ? Acceptable : Invalid;
    }
};

} // namespace

FrmNameFile::FrmNameFile(const QString& folder, QWidget* parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::FrmNameFile>()), m_folder(folder) {
    m_ui->setupUi(this);
    AssignHBCaption(this);
    m_ui->txtNamefile->setValidator(new NameValidator(m_ui->txtNamefile));
    const QString machine = platform::ToMachine(folder);
    m_ui->lblInfoPermission->setVisible(machine.isEmpty() || !platform::IsWritableFolder(machine));
    connect(m_ui->cmdok, &QPushButton::clicked, this, &FrmNameFile::cmdOk_Click);
    connect(m_ui->cmdAnnulla, &QPushButton::clicked, this, &QDialog::reject);
}

FrmNameFile::~FrmNameFile() = default;

void FrmNameFile::cmdOk_Click() {
    FileName = CheckedFileName(m_ui->txtNamefile->text(), m_folder);
    if (FileName.isEmpty()) {
        m_ui->txtNamefile->setFocus();
        m_ui->txtNamefile->selectAll();
    } else {
        accept();
    }
}

} // namespace velmora
