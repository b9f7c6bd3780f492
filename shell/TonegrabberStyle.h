// The application's look: a Fusion-based style with a dark palette and blue tool tips.
#pragma once

#include <QProxyStyle>

class QApplication;

namespace tg::shell {

class TonegrabberStyle : public QProxyStyle {
    Q_OBJECT
  public:
    TonegrabberStyle();
    void polish(QPalette& palette) override;
    using QProxyStyle::polish;
    // Alt alone puts the focus on the menu bar, so every menu entry (many have no shortcut)
    // can be reached from the keyboard.
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returnData) const override;
};

// The tool-tip sheet, shared with the checked-button sheet the panels use.
constexpr const char* kToolTipStyleSheet =
    "QToolTip { color: #ffffff; background-color: #2a82da; border: 1px solid white; }";
constexpr const char* kCheckedButtonStyleSheet =
    "QPushButton:checked{ background-color: rgb(42, 130, 218);}";

// Installs TonegrabberStyle, its palette and the tool-tip sheet on the application.
void installTonegrabberStyle(QApplication& app);

} // namespace tg::shell
