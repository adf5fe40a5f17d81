#include "devhost/window/DarkTheme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

bool keepsDesktop = false;

double luminance(QColor const& color)
{
    auto const linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

bool isHighContrast(QPalette const& palette)
{
    double const ground = luminance(palette.color(QPalette::Window));
    double const text = luminance(palette.color(QPalette::WindowText));
    constexpr double kHigh = 20;
    return (std::max(ground, text) + 0.05) / (std::min(ground, text) + 0.05) >= kHigh;
}

} // namespace

void DarkTheme::setHighContrast(QColor const& text, QColor const& ground)
{
    // Edges of the text's colour, as such desktops have them.
    QPalette palette(text, ground, text, text, text, text, text, ground, ground);
    palette.setColor(QPalette::Highlight, text);
    palette.setColor(QPalette::HighlightedText, ground);
    palette.setColor(QPalette::PlaceholderText, text);
    palette.setColor(QPalette::ToolTipBase, ground);
    palette.setColor(QPalette::ToolTipText, text);
    QApplication::setPalette(palette);
}

QColor DarkTheme::text(QColor const& color)
{
    return keepsDesktop ? QApplication::palette().color(QPalette::WindowText) : color;
}

void DarkTheme::apply(QApplication& app)
{
    QPalette palette = QApplication::palette();
    keepsDesktop = isHighContrast(palette);
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s)); // the same everywhere, and it obeys a palette
    if (keepsDesktop) {
        QApplication::setPalette(palette); // not that of the style
        app.setStyleSheet(u"*[heading=\"true\"] { font-weight: bold; }"_s);
        return;
    }

    palette.setColor(QPalette::Window, kWindow);
    palette.setColor(QPalette::Base, kBase);
    palette.setColor(QPalette::AlternateBase, kWindow);
    palette.setColor(QPalette::Button, kButton);
    palette.setColor(QPalette::Light, kButton.lighter(130));
    palette.setColor(QPalette::Midlight, kButton.lighter(115));
    palette.setColor(QPalette::Mid, kOutline);
    palette.setColor(QPalette::Dark, kConsole);
    palette.setColor(QPalette::ToolTipBase, kBase);
    palette.setColor(QPalette::Highlight, kChosen);
    palette.setColor(QPalette::Inactive, QPalette::Highlight, kOutline);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, kAccent);
    for (auto const role :
        {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, kText);
    }
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, kFaintText);
    for (auto const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, kFaintText.darker(150));
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, kOutline);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, kFaintText);
    QApplication::setPalette(palette);

    // By property, so that no widget of a package is meant.
    app.setStyleSheet(u"QToolTip { color: %1; background: %2; border: 1px solid %3; padding: 3px; }"
                      "QMenu { border: 1px solid %5; }"
                      "*[heading=\"true\"] { color: %1; font-weight: bold; }"
                      "*[faint=\"true\"] { color: %4; }"_s.arg(kText.name(), kBase.name(), kOutline.name(),
                          kFaintText.name(), kFaintText.darker(180).name()));
}
