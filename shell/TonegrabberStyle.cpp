// The dark theme.
#include "shell/TonegrabberStyle.h"

#include <QApplication>
#include <QStyleFactory>

namespace tg::shell {

namespace {

const QColor kWindow(53, 53, 53);
const QColor kBase(35, 35, 35);
const QColor kHighlight(42, 130, 218); // the tool-tip blue
const QColor kDisabledText(127, 127, 127);

} // namespace

TonegrabberStyle::TonegrabberStyle() : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion")))
{
}

int TonegrabberStyle::styleHint(StyleHint hint, const QStyleOption* option,
                                const QWidget* widget, QStyleHintReturn* returnData) const
{
    if (hint == SH_MenuBar_AltKeyNavigation)
        return 1;
    return QProxyStyle::styleHint(hint, option, widget, returnData);
}

void TonegrabberStyle::polish(QPalette& palette)
{
    palette.setColor(QPalette::Window, kWindow);
    palette.setColor(QPalette::WindowText, Qt::white);
    palette.setColor(QPalette::Base, kBase);
    palette.setColor(QPalette::AlternateBase, kWindow);
    palette.setColor(QPalette::ToolTipBase, kHighlight);
    palette.setColor(QPalette::ToolTipText, Qt::white);
    palette.setColor(QPalette::Text, Qt::white);
    palette.setColor(QPalette::Button, kWindow);
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::BrightText, Qt::red);
    palette.setColor(QPalette::Link, kHighlight);
    palette.setColor(QPalette::Highlight, kHighlight);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    palette.setColor(QPalette::Disabled, QPalette::Text, kDisabledText);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, kDisabledText);
    palette.setColor(QPalette::Disabled, QPalette::WindowText, kDisabledText);
}

void installTonegrabberStyle(QApplication& app)
{
    auto* style = new TonegrabberStyle; // the application takes it over
    QApplication::setStyle(style);
    QPalette palette = style->standardPalette();
    style->polish(palette);
    QApplication::setPalette(palette);
    app.setStyleSheet(QString::fromLatin1(kToolTipStyleSheet));
}

} // namespace tg::shell
