#include "devhost/DarkTheme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

using namespace Qt::StringLiterals;

void DarkTheme::apply(QApplication& app)
{
    QApplication::setStyle(QStyleFactory::create(u"Fusion"_s)); // the same everywhere, and it obeys a palette

    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, window);
    palette.setColor(QPalette::Button, button);
    palette.setColor(QPalette::Light, button.lighter(130));
    palette.setColor(QPalette::Midlight, button.lighter(115));
    palette.setColor(QPalette::Mid, outline);
    palette.setColor(QPalette::Dark, console);
    palette.setColor(QPalette::ToolTipBase, base);
    palette.setColor(QPalette::Highlight, chosen);
    palette.setColor(QPalette::Inactive, QPalette::Highlight, outline);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, accent);
    for (auto const role :
        {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, text);
    }
    palette.setColor(QPalette::BrightText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, faintText);
    for (auto const role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, faintText.darker(150));
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, outline);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, faintText);
    QApplication::setPalette(palette);

    // By property, so that no widget of a package is meant.
    app.setStyleSheet(u"QToolTip { color: %1; background: %2; border: 1px solid %3; padding: 3px; }"
                      "QMenu { border: 1px solid %5; }"
                      "*[heading=\"true\"] { color: %1; font-weight: bold; }"
                      "*[faint=\"true\"] { color: %4; }"_s.arg(text.name(), base.name(), outline.name(),
                          faintText.name(), faintText.darker(180).name()));
}
