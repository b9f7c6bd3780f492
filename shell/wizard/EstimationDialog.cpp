#include "shell/wizard/EstimationDialog.h"

#include "core/Model.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

#include <vector>

namespace tg::shell {

namespace {

// The Multi-Samples a scope covers, in model order.
std::vector<const TGmsl*> multiSamplesIn(const Model& model, EstimationDialog::Scope scope)
{
    std::vector<const TGmsl*> msls;
    const int index = model.currentProjectIndex();
    if (index < 0 || index >= model.projectCount())
        return msls;
    const Project* current = &model.project(index);
    switch (scope) {
    case EstimationDialog::SelectedMultiSample:
        if (current->currentMsl >= 0 && current->currentMsl < current->mslCount)
            msls.push_back(&current->msl[current->currentMsl]);
        break;
    case EstimationDialog::SelectedProject:
        for (int m = 0; m < current->mslCount; ++m)
            msls.push_back(&current->msl[m]);
        break;
    case EstimationDialog::AllProjects:
        for (int p = 0; p < model.projectCount(); ++p)
            for (int m = 0; m < model.project(p).mslCount; ++m)
                msls.push_back(&model.project(p).msl[m]);
        break;
    }
    return msls;
}

} // namespace

EstimationDialog::EstimationDialog(const Model& model, QWidget* parent)
    : QDialog(parent), model_(model)
{
    setWindowTitle(QString::fromLatin1(kEstimationDialogTitle));
    setObjectName(QStringLiteral("EstimationDialog"));
    auto* layout = new QVBoxLayout(this);

    auto* scopeBox = new QGroupBox(tr("Show Estimations for"));
    auto* scopeLayout = new QVBoxLayout(scopeBox);
    const QString texts[] = {tr("Selected Multi-Sample"), tr("Selected Project"),
                             tr("All Projects")};
    const char* names[] = {"scopeMultiSample", "scopeProject", "scopeAll"};
    for (int i = 0; i < 3; ++i) {
        auto* radio = new QRadioButton(texts[i]);
        radio->setObjectName(QString::fromLatin1(names[i]));
        scope_.addButton(radio, i);
        scopeLayout->addWidget(radio);
    }
    scope_.button(SelectedProject)->setChecked(true);
    layout->addWidget(scopeBox);

    keepLocked_ = new QCheckBox(tr("Keep locked Key-Samples"));
    keepLocked_->setObjectName(QStringLiteral("keepLocked"));
    onlyEmpty_ = new QCheckBox(tr("Record only empty Key-Samples"));
    onlyEmpty_->setObjectName(QStringLiteral("onlyEmpty"));
    layout->addWidget(keepLocked_);
    layout->addWidget(onlyEmpty_);

    auto* figures = new QFormLayout;
    time_ = new QLabel;
    time_->setObjectName(QStringLiteral("time"));
    size_ = new QLabel;
    size_->setObjectName(QStringLiteral("size"));
    figures->addRow(tr("Time:"), time_);
    figures->addRow(tr("Size:"), size_);
    layout->addLayout(figures);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);

    connect(&scope_, &QButtonGroup::idToggled, this, [this](int, bool on) {
        if (on)
            recompute();
    });
    connect(keepLocked_, &QCheckBox::toggled, this, &EstimationDialog::recompute);
    connect(onlyEmpty_, &QCheckBox::toggled, this, &EstimationDialog::recompute);
    recompute();
}

QString EstimationDialog::timeText() const
{
    return time_->text();
}

QString EstimationDialog::sizeText() const
{
    return size_->text();
}

void EstimationDialog::recompute()
{
    const std::vector<const TGmsl*> msls = multiSamplesIn(model_, Scope(scope_.checkedId()));
    bool searches = false;
    for (const TGmsl* msl : msls)
        searches = searches || msl->recordsettings.autoloop == 1;
    LoopSpeedTable speeds = cachedLoopSearchSpeeds();
    if (searches) {
        // The loop-search figures are measured once per program run, on first need.
        QApplication::setOverrideCursor(Qt::WaitCursor);
        speeds = measureLoopSearchSpeeds();
        QApplication::restoreOverrideCursor();
    }
    EstimateOptions options;
    options.keepLocked = keepLocked_->isChecked();
    options.onlyEmpty = onlyEmpty_->isChecked();
    estimate_ = RecordingEstimate{};
    for (const TGmsl* msl : msls)
        addMultiSampleEstimate(*msl, options, speeds, estimate_);
    time_->setText(QString::fromStdString(formatEstimateTime(estimate_.seconds)));
    size_->setText(QString::fromStdString(formatEstimateSize(estimate_.bytes)));
}

} // namespace tg::shell
