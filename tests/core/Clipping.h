// Whether the texts of a window have the room they need.
// SPDX-License-Identifier: AGPL-3.0-or-later
#pragma once

#include <QAbstractButton>
#include <QGroupBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QStringList>
#include <QTabBar>
#include <QWidget>

namespace velmora {

namespace clipping {

inline bool Fits(const QLabel& label) {
    const QSize room = label.contentsRect().size();
    const int outer = label.width() - room.width() + 2 * label.margin();
    if (!label.wordWrap()) {
        return label.width() >= label.sizeHint().width() &&
               label.height() >= label.fontMetrics().height();
    }
    int widest = 0;
    for (const QString& word : label.text().split(u' ')) {
        widest = std::max(widest, label.fontMetrics().horizontalAdvance(word));
    }
    return label.height() >= label.heightForWidth(label.width()) && label.width() - outer >= widest;
}

inline bool Fits(const QTabBar& bar) {
    bool fits = bar.width() >= bar.minimumSizeHint().width();
    for (int tab = 0; tab < bar.count(); ++tab) {
        fits = fits && bar.rect().contains(bar.tabRect(tab)) &&
               bar.tabRect(tab).width() >= bar.fontMetrics().horizontalAdvance(bar.tabText(tab));
    }
    return fits;
}

inline bool Fits(const QHeaderView& header) {
    bool fits = true;
    for (int section = 0; section < header.count(); ++section) {
        const int wanted = header.fontMetrics().horizontalAdvance(
            header.model()->headerData(section, header.orientation()).toString());
        fits = fits && (header.isSectionHidden(section) || wanted == 0 ||
                        header.sectionSize(section) >= wanted);
    }
    return fits;
}

// The text of a control that does not fit; nothing when it does or has none.
inline QString Clipped(const QWidget& widget) {
    if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
        return label->text().isEmpty() || Fits(*label) ? QString() : label->text();
    }
    if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
        if (button->objectName() == u"qt_toolbar_ext_button") {
            return QStringLiteral("(a tool bar is too narrow for its buttons)");
        }
        const QSize wanted = button->sizeHint();
        const bool fits = button->width() >= wanted.width() && button->height() >= wanted.height();
        return button->text().isEmpty() || fits ? QString() : button->text();
    }
    if (const auto* box = qobject_cast<const QLineEdit*>(&widget)) {
        const int wanted = box->fontMetrics().horizontalAdvance(box->placeholderText());
        return box->width() >= wanted ? QString() : box->placeholderText();
    }
    if (const auto* group = qobject_cast<const QGroupBox*>(&widget)) {
        return group->width() >= group->minimumSizeHint().width() ? QString() : group->title();
    }
    if (const auto* bar = qobject_cast<const QTabBar*>(&widget)) {
        return Fits(*bar) ? QString() : QStringLiteral("(a tab)");
    }
    if (const auto* header = qobject_cast<const QHeaderView*>(&widget)) {
        return header->orientation() == Qt::Vertical || Fits(*header)
                   ? QString()
                   : QStringLiteral("(the head of a column)");
    }
    return {};
}

} // namespace clipping

// What is cut off in a shown window, or was never given its text, as "objectName: text": a test
// expects nothing.
//   window.show();
//   EXPECT_THAT(ClippedTexts(window), IsEmpty());
// Labels that elide on purpose (horizontal policy Ignored) are left out.
inline QStringList ClippedTexts(const QWidget& window) {
    QStringList clipped;
    if (!window.isVisible()) {
        return {QStringLiteral("(nothing to look at: is the window shown?)")};
    }
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        if (!widget->isVisibleTo(&window) || widget->window() != &window) {
            continue;
        }
        const QString text = widget->property("text").toString();
        if (text.startsWith(u"_R")) {
            clipped << widget->objectName() + QStringLiteral(": no caption: ") + text;
        }
        const bool elides = widget->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored;
        if (const QString cut = elides ? QString() : clipping::Clipped(*widget); !cut.isEmpty()) {
            clipped << widget->objectName() + QStringLiteral(": ") + cut;
        }
    }
    return clipped;
}

} // namespace velmora
