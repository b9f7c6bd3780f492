// The three-way choice of the level dialogs: the selected Sample, all Samples of the selected
// Multi-Sample, or all of the selected Project.
#pragma once

#include "analysis/KeySampleFile.h"

#include <QButtonGroup>
#include <QGroupBox>

namespace tg::shell {

class ScopeChoice : public QGroupBox {
    Q_OBJECT
  public:
    // `texts` name the Sample, Multi-Sample and Project choices in that order.
    ScopeChoice(const QStringList& texts, KeyScope initial, QWidget* parent);
    KeyScope scope() const { return KeyScope(buttons_.checkedId()); }

  private:
    QButtonGroup buttons_;
};

} // namespace tg::shell
