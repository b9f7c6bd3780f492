// Loading the editor's Key-Sample.
#include "shell/editor/LoadedSample.h"

#include "audiofile/KeySampleAudio.h"
#include "core/Model.h"
#include "core/NoteNames.h"

#include <QObject>

namespace tg::shell {

void loadCurrentKeySample(Model& model, TGsample& sample)
{
    sample.wave.clear();
    sample.keyHadAudio = false;
    sample.project = model.currentProject() ? model.currentProjectIndex() : -1;
    TGmsl* msl = model.currentMultiSample();
    sample.msl = msl ? model.currentProject()->currentMsl : -1;
    sample.note = msl ? model.currentKey() : -1;
    if (sample.note < 0) {
        sample.problem = QObject::tr("No Key-Sample selected");
        return;
    }
    WaveFormat format;
    std::vector<uint8_t> data;
    const Result loaded =
        loadKeySampleAudio(*model.currentProject(), *msl, sample.note, format, data);
    sample.keyHadAudio = msl->keys[sample.note].hasAudio != 0;
    if (!loaded.ok()) {
        sample.problem = QObject::tr("Key %1 (%2): %3")
                             .arg(sample.note)
                             .arg(QString::fromStdString(noteName(sample.note)))
                             .arg(QString::fromStdString(loaded.message));
        return;
    }
    sample.wave.assign(format, std::move(data));
    sample.problem = sample.wave.empty()
                         ? QObject::tr("The audio format of this Key-Sample cannot be shown.")
                         : QString();
}

TGmsl_key* keyOf(Model& model, const TGsample& sample)
{
    if (sample.project < 0 || sample.project >= model.projectCount() || sample.note < 0)
        return nullptr;
    Project& project = model.project(sample.project);
    if (sample.msl < 0 || sample.msl >= project.mslCount)
        return nullptr;
    return &project.msl[sample.msl].keys[sample.note];
}

} // namespace tg::shell
