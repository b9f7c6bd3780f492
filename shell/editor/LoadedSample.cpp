// Loading the editor's Key-Sample.
#include "shell/editor/LoadedSample.h"

#include "audiofile/KeySampleAudio.h"
#include "core/Model.h"
#include "core/NoteNames.h"

#include "core/Names.h"

#include <QObject>

#include <sys/stat.h>

namespace tg::shell {

namespace {

// Device, inode, size and modification time of the key's file; empty when it cannot be read.
std::string fileIdentityOf(Model& model, const TGsample& sample)
{
    if (sample.project < 0 || sample.project >= model.projectCount())
        return {};
    const Project& project = model.project(sample.project);
    if (sample.msl < 0 || sample.msl >= project.mslCount || sample.note < 0)
        return {};
    struct stat info {};
    const std::string path = keySampleFileName(project, project.msl[sample.msl], sample.note);
    if (::stat(path.c_str(), &info) != 0)
        return {};
    return std::to_string(info.st_dev) + ':' + std::to_string(info.st_ino) + ':' +
           std::to_string(info.st_size) + ':' + std::to_string(info.st_mtim.tv_sec) + '.' +
           std::to_string(info.st_mtim.tv_nsec);
}

} // namespace

void loadCurrentKeySample(Model& model, TGsample& sample)
{
    sample.wave.clear();
    sample.keyHadAudio = false;
    sample.fileIdentity.clear();
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
    sample.fileIdentity = fileIdentityOf(model, sample);
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

bool takeReplacedOnDisk(Model& model, const TGsample& sample)
{
    return !sample.wave.empty() && fileIdentityOf(model, sample) != sample.fileIdentity;
}

} // namespace tg::shell
