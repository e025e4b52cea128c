// A first-time hint: a picture, a sentence, and a box to see it no more.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class FrmFTMessage;
}

namespace velmora {

class FrmFTMessage : public QDialog {
    Q_OBJECT

  public:
    explicit FrmFTMessage(QWidget* parent = nullptr);
    ~FrmFTMessage() override;

    // `pictureId` as ShowFTMessage takes it; an id without a picture shows the text alone.
    void SetMessage(int pictureId, const QString& text, const QString& title);
    // Out: whether the box is ticked.
    bool DontShowAgain() const;

  private:
    std::unique_ptr<Ui::FrmFTMessage> m_ui;
};

} // namespace velmora
