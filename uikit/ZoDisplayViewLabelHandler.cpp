#include "uikit/ZoDisplayViewLabelHandler.h"

#include "uikit/ZoDisplayViewAttribute.h"
#include "uikit/ZoDisplayViewStyleSheet.h"

#include <QFont>
#include <QFontMetrics>
#include <QLabel>

#include <algorithm>

namespace {

// Stored settings may hold any number; fonts outside this range cannot be drawn on a face of 108 pixels.
constexpr int kSmallestSize = 1;
constexpr int kLargestSize = 500;

// Per cent of their width; narrower letters cannot be read.
constexpr int kNarrowest = 65;
// The part of the width that stays free then, so that the text does not touch the edges.
constexpr int kMargin = 10;

int drawableSize(ZoDisplayViewAttribute const& attribute)
{
    return std::clamp(attribute.size, kSmallestSize, kLargestSize);
}

void applyLook(QLabel* label, ZoDisplayViewAttribute const& attribute, QString const& styleSheet)
{
    constexpr int kKnown = Qt::AlignHorizontal_Mask | Qt::AlignVertical_Mask;
    label->setAlignment(Qt::Alignment::fromInt(attribute.horAlignment & kKnown) | Qt::AlignBottom);
    QFont font = label->font();
    if (!attribute.family.isEmpty()) {
        font.setFamily(attribute.family);
    }
    font.setWeight(attribute.bold ? QFont::Bold : QFont::Normal);
    font.setItalic(attribute.italic);
    font.setUnderline(attribute.underLine);
    label->setFont(font);
    // Parsing a style sheet and polishing the label costs far more than comparing.
    if (label->styleSheet() != styleSheet) {
        label->setStyleSheet(styleSheet);
    }
}

} // namespace

void ZoDisplayViewLabelHandler::modifyIconWidgetLabel(
    QLabel* label, int bottom, ZoDisplayViewAttribute const& attribute)
{
    if (!label) {
        return;
    }
    int const px = 2 * drawableSize(attribute);
    applyLook(label, attribute, ZoDisplayViewStyleSheet::getIconViewLabelTextString(attribute.color, px));
    label->setFixedHeight(px + 4);
    label->move(label->x(), bottom - px - 10);
    fitText(label);
}

void ZoDisplayViewLabelHandler::modifyPropertyWidgetLabel(
    QLabel* label, int bottom, ZoDisplayViewAttribute const& attribute)
{
    if (!label) {
        return;
    }
    int const px = drawableSize(attribute);
    applyLook(label, attribute, ZoDisplayViewStyleSheet::getPropertyViewLabelTextString(attribute.color, px));
    label->setFixedHeight(px + 5);
    label->move(label->x(), bottom - px - 8);
    fitText(label);
}

void ZoDisplayViewLabelHandler::fitText(QLabel* label)
{
    if (!label || label->text().isEmpty()) {
        return;
    }
    // Its parent may be one of many that nobody ever sees.
    if (auto const* parent = label->parentWidget();
        parent && !parent->testAttribute(Qt::WA_WState_Polished)) {
        return;
    }
    label->ensurePolished();
    QFont natural = label->font();
    natural.setStretch(QFont::Unstretched);
    int const width = std::max(1, QFontMetrics(natural).horizontalAdvance(label->text()));
    int stretch = QFont::Unstretched;
    if (width > label->width()) {
        int const room = label->width() - label->width() / kMargin;
        stretch = std::max(room * stretch / width, kNarrowest);
    }
    // An untouched font says "any".
    int const now =
        label->font().stretch() == QFont::AnyStretch ? QFont::Unstretched : label->font().stretch();
    if (stretch != now) {
        natural.setStretch(stretch);
        label->setFont(natural);
    }
}
