// Dock title bar and dock state.
#include "shell/DockWidget.h"

#include "core/IniKeys.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QSettings>
#include <QStyle>
#include <QToolButton>

namespace tg::shell {

namespace {

QToolButton* titleButton(QWidget* parent, QStyle::StandardPixmap icon, const QString& tip,
                         const QString& name)
{
    auto* button = new QToolButton(parent);
    button->setIcon(parent->style()->standardIcon(icon));
    button->setToolTip(tip);
    button->setObjectName(name);
    button->setAutoRaise(true);
    return button;
}

} // namespace

DockWidget::DockWidget(const QString& title, const QString& objectName, QWidget* parent)
    : QDockWidget(title, parent)
{
    setObjectName(objectName);

    auto* bar = new QWidget(this);
    bar->setObjectName(QStringLiteral("titleBar"));
    title_ = new QLabel(title, bar);
    dockBack_ = titleButton(bar, QStyle::SP_TitleBarNormalButton, tr("Put back into the window"),
                            QStringLiteral("dockBack"));
    close_ = titleButton(bar, QStyle::SP_TitleBarCloseButton, tr("Close"), QStringLiteral("close"));
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(6, 2, 2, 2);
    layout->addWidget(title_, 1);
    layout->addWidget(dockBack_);
    layout->addWidget(close_);
    setTitleBarWidget(bar);

    connect(dockBack_, &QToolButton::clicked, this, [this] { setFloating(false); });
    connect(close_, &QToolButton::clicked, this, &QDockWidget::close);
    connect(this, &QDockWidget::topLevelChanged, this, &DockWidget::onFloatingChanged);
    connect(this, &QDockWidget::windowTitleChanged, title_, &QLabel::setText);
    onFloatingChanged(isFloating());
}

void DockWidget::setPanel(QWidget* panel)
{
    setWidget(panel);
}

void DockWidget::onFloatingChanged(bool floating)
{
    // Only a floating dock has somewhere to go back to.
    dockBack_->setEnabled(floating);
}

void DockWidget::writeState(QSettings& ini) const
{
    ini.setValue(objectName() + ini::kDockGeometrySuffix, saveGeometry());
    ini.setValue(objectName() + ini::kDockIsFloatingSuffix, isFloating());
}

void DockWidget::readState(const QSettings& ini)
{
    const QVariant geometry = ini.value(objectName() + ini::kDockGeometrySuffix);
    if (geometry.isValid())
        restoreGeometry(geometry.toByteArray());
    const QVariant floating = ini.value(objectName() + ini::kDockIsFloatingSuffix);
    if (floating.isValid())
        setFloating(floating.toBool());
}

} // namespace tg::shell
