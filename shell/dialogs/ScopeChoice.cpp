// The scope radio buttons.
#include "shell/dialogs/ScopeChoice.h"

#include <QRadioButton>
#include <QVBoxLayout>

namespace tg::shell {

ScopeChoice::ScopeChoice(const QStringList& texts, KeyScope initial, QWidget* parent)
    : QGroupBox(parent)
{
    setObjectName(QStringLiteral("scope"));
    auto* layout = new QVBoxLayout(this);
    const KeyScope scopes[] = {KeyScope::Sample, KeyScope::MultiSample, KeyScope::Project};
    const char* names[] = {"scopeSample", "scopeMultiSample", "scopeProject"};
    for (int i = 0; i < texts.size() && i < 3; ++i) {
        auto* button = new QRadioButton(texts[i], this);
        button->setObjectName(QString::fromLatin1(names[i]));
        buttons_.addButton(button, int(scopes[i]));
        layout->addWidget(button);
        button->setChecked(scopes[i] == initial);
    }
}

} // namespace tg::shell
