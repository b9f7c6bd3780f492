// Widget test helpers.
#include "shell/tests/WidgetTestSupport.h"

#include "core/Model.h"
#include "core/ProjectFile.h"

#include <QAbstractButton>
#include <QApplication>

#include <filesystem>
#include <stdexcept>

namespace tg::test {

MessageBoxAnswerer::MessageBoxAnswerer(QMessageBox::StandardButton answer, QString answerText)
    : answer_(answer), answerText_(std::move(answerText))
{
    connect(&timer_, &QTimer::timeout, this, &MessageBoxAnswerer::answerOpenBox);
    timer_.start(10);
}

QStringList MessageBoxAnswerer::texts() const
{
    QStringList texts;
    for (const Seen& s : seen_)
        texts << s.text;
    return texts;
}

void MessageBoxAnswerer::answerOpenBox()
{
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    if (!box || !box->isVisible())
        return;
    seen_.push_back({box->windowTitle(), box->text()});
    QAbstractButton* button = nullptr;
    if (!answerText_.isEmpty())
        for (QAbstractButton* candidate : box->buttons())
            if (candidate->text() == answerText_)
                button = candidate;
    if (!button)
        button = box->button(answer_);
    if (button)
        button->click();
    else
        box->reject();
}

std::string writeProjectFile(const std::string& folder, const std::string& name,
                             const std::vector<std::string>& multiSamples)
{
    Model model;
    model.newProject();
    Project& project = *model.currentProject();
    for (const std::string& mslName : multiSamples) {
        model.addMultiSample();
        TGmsl& msl = *model.currentMultiSample();
        copyText(msl.name, mslName.c_str());
        for (int note = 60; note <= 64; ++note)
            msl.keys[note].keyState = 1;
    }
    copyText(project.dataPath, folder.c_str());
    std::filesystem::create_directories(folder);
    std::string message;
    if (!saveProject(project, folder, name, message))
        throw std::runtime_error(message);
    return folder + "/" + name + ".TGprj";
}

} // namespace tg::test
