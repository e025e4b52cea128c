// A combo box that shortens long texts in the middle: a path says most at its two ends.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QAbstractItemView>
#include <QComboBox>
#include <QStylePainter>

namespace velmora {

// The whole text is the tool tip, of the box and of each item in its list.
class ElidedComboBox : public QComboBox {
    Q_OBJECT

  public:
    explicit ElidedComboBox(QWidget* parent = nullptr) : QComboBox(parent) {
        view()->setTextElideMode(Qt::ElideMiddle);
        connect(this, &QComboBox::currentTextChanged, this,
                [this](const QString& text) { setToolTip(text.toHtmlEscaped()); });
    }

    void AddText(const QString& text) {
        addItem(text);
        setItemData(count() - 1, text.toHtmlEscaped(), Qt::ToolTipRole);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QStylePainter painter(this);
        QStyleOptionComboBox option;
        initStyleOption(&option);
        painter.drawComplexControl(QStyle::CC_ComboBox, option);
        const QRect room = style()->subControlRect(QStyle::CC_ComboBox, &option,
                                                   QStyle::SC_ComboBoxEditField, this);
        option.currentText = option.fontMetrics.elidedText(option.currentText, Qt::ElideMiddle,
                                                           room.width() - kMargin);
        painter.drawControl(QStyle::CE_ComboBoxLabel, option);
    }

  private:
    static constexpr int kMargin = 4; // styles keep some room within the field
};

} // namespace velmora
