// The model's state and its Project and Multi-Sample operations.
#include "core/Model.h"

#include <algorithm>
#include <new>

namespace tg {

namespace {

const char* const kTooManyProjects = "You cannot have more than %ld Projects.";
const char* const kTooManyMultiSamples = "You cannot have more than %ld Multi-Samples.";
const char* const kNoProjectMemory = "unable to allocate memory for the projects";

// Puts a Project record back to its new-record state without a 3 MB temporary.
void clearProject(Project& project)
{
    for (TGmsl& msl : project.msl)
        msl = TGmsl();
    project.name[0] = '\0';
    project.projectDir[0] = '\0';
    project.fileName[0] = '\0';
    project.dataPath[0] = '\0';
    project.mslCount = 0;
    project.currentMsl = 0;
    project.topMsl = 0;
    project.viewValue = 0;
    project.viewKey = 65535;
    project.modified = 0;
}

bool rowVisible(int row, int top, int rows)
{
    return row >= top && row <= top + rows - 1;
}

} // namespace

Model::Model()
{
    reset();
}

Model& Model::instance()
{
    static Model model;
    return model;
}

void Model::reset()
{
    for (auto& project : projects_)
        if (project)
            clearProject(*project);
    projectCount_ = 0;
    currentProject_ = 0;
    topProject_ = 0;
    prefs_ = defaultPreferences();
    audioInputDeviceCount_ = 0;
    listeners_.clear();
    view_ = slot(0);
}

bool Model::allocateProjects()
{
    for (int i = 0; i < kMaxProjects; ++i)
        if (!slot(i))
            return false;
    return true;
}

Project* Model::slot(int index)
{
    if (index < 0 || index >= kMaxProjects)
        return nullptr;
    if (!projects_[index])
        projects_[index].reset(new (std::nothrow) Project);
    return projects_[index].get();
}

Project& Model::project(int index)
{
    return *slot(index);
}

const Project& Model::project(int index) const
{
    return *projects_.at(index);
}

Project* Model::currentProject()
{
    return projectCount_ > 0 ? view_ : nullptr;
}

TGmsl* Model::currentMultiSample()
{
    Project* project = currentProject();
    if (!project || project->mslCount <= 0 || project->currentMsl < 0 ||
        project->currentMsl >= project->mslCount)
        return nullptr;
    return &project->msl[project->currentMsl];
}

void Model::pointViewAt(int index)
{
    if (Project* project = slot(index))
        view_ = project;
}

void Model::selectProject(int index)
{
    if (index < 0 || index >= projectCount_)
        return;
    currentProject_ = index;
    pointViewAt(index);
    notifyListeners([&](TonegrabberModelListener& l) { l.currentProjectChanged(index); });
}

void Model::selectMultiSample(int index)
{
    Project* project = currentProject();
    if (!project || index < 0 || index >= project->mslCount)
        return;
    project->currentMsl = index;
    notifyListeners([&](TonegrabberModelListener& l) { l.currentMultiSampleChanged(index); });
}

int Model::currentKey() const
{
    if (projectCount_ == 0 || !view_ || view_->viewKey >= kKeyCount)
        return -1;
    return view_->viewKey;
}

void Model::selectKey(int note)
{
    Project* project = currentProject();
    if (!project || note >= kKeyCount)
        return;
    project->viewKey = note < 0 ? uint16_t(65535) : uint16_t(note);
    notifyListeners([&](TonegrabberModelListener& l) { l.currentKeyChanged(currentKey()); });
}

// ---------------------------------------------------------------- Projects

Result Model::newProject()
{
    if (projectCount_ >= kMaxProjects)
        return Result::refused(formatText(kTooManyProjects, static_cast<long>(kMaxProjects)));
    const int index = projectCount_;
    Project* project = slot(index);
    if (!project)
        return Result::refused(kNoProjectMemory);
    const int32_t viewValue = view_->viewValue; // taken over from the Project that was current
    projectCount_ = index + 1;
    currentProject_ = index;
    project->name[0] = '\0';
    project->projectDir[0] = '\0';
    project->fileName[0] = '\0';
    copyText(project->dataPath, prefs_.datapath);
    project->mslCount = 0;
    project->currentMsl = 0;
    project->topMsl = 0;
    project->viewValue = viewValue;
    project->viewKey = 65535;
    project->modified = 0;
    pointViewAt(index);
    notifyListeners([&](TonegrabberModelListener& l) {
        l.projectListChanged();
        l.currentProjectChanged(index);
    });
    return Result::done();
}

Result Model::deleteProject()
{
    if (projectCount_ <= 0)
        return Result::done();
    // The later Projects move down one place; the removed record goes to the free end so
    // it can be reused.
    std::rotate(projects_.begin() + currentProject_, projects_.begin() + currentProject_ + 1,
                projects_.begin() + projectCount_);
    --projectCount_;
    if (currentProject_ > 0)
        --currentProject_;
    if (projectCount_ > 0) {
        pointViewAt(currentProject_);
    } else {
        view_ = slot(0);
        view_->mslCount = 0;
    }
    const int current = currentProject_;
    notifyListeners([&](TonegrabberModelListener& l) {
        l.projectListChanged();
        l.currentProjectChanged(current);
    });
    return Result::done();
}

Result Model::duplicateProject()
{
    if (projectCount_ >= kMaxProjects)
        return Result::refused(formatText(kTooManyProjects, static_cast<long>(kMaxProjects)));
    if (projectCount_ <= 0)
        return Result::done();
    const int index = projectCount_;
    Project* copy = slot(index);
    if (!copy)
        return Result::refused(kNoProjectMemory);
    *copy = *view_;
    copy->projectDir[0] = '\0'; // the copy has never been saved
    copy->fileName[0] = '\0';
    projectCount_ = index + 1;
    currentProject_ = index;
    pointViewAt(index);
    if (!rowVisible(index, topProject_, kVisibleProjectRows))
        topProject_ = std::max(0, index - (kVisibleProjectRows - 1));
    notifyListeners([&](TonegrabberModelListener& l) {
        l.projectListChanged();
        l.currentProjectChanged(index);
    });
    return Result::done();
}

Result Model::moveProjectUp()
{
    if (projectCount_ <= 0 || currentProject_ <= 0)
        return Result::done();
    std::swap(projects_[currentProject_], projects_[currentProject_ - 1]);
    --currentProject_;
    pointViewAt(currentProject_);
    const int current = currentProject_;
    notifyListeners([&](TonegrabberModelListener& l) {
        l.projectListChanged();
        l.currentProjectChanged(current);
    });
    return Result::done();
}

Result Model::moveProjectDown()
{
    if (currentProject_ >= projectCount_ - 1)
        return Result::done();
    std::swap(projects_[currentProject_], projects_[currentProject_ + 1]);
    ++currentProject_;
    pointViewAt(currentProject_);
    const int current = currentProject_;
    notifyListeners([&](TonegrabberModelListener& l) {
        l.projectListChanged();
        l.currentProjectChanged(current);
    });
    return Result::done();
}

// ---------------------------------------------------------------- Multi-Samples

void Model::keepMultiSampleVisible()
{
    Project& p = *view_;
    if (!rowVisible(p.currentMsl, p.topMsl, kVisibleMultiSampleRows))
        p.topMsl = std::max(0, p.mslCount - kVisibleMultiSampleRows);
}

void Model::resetChannelLists(TGmsl& msl) const
{
    // One entry per device of the audio input device list, none chosen yet.
    msl.audioInChannelL.assign(static_cast<size_t>(audioInputDeviceCount_), -1);
    msl.audioInChannelR.assign(static_cast<size_t>(audioInputDeviceCount_), -1);
}

Result Model::addMultiSample()
{
    if (!currentProject())
        return Result::done();
    Project& p = *view_;
    if (p.mslCount >= kMaxMultiSamples)
        return Result::refused(
            formatText(kTooManyMultiSamples, static_cast<long>(kMaxMultiSamples)));
    const int index = p.mslCount;
    p.msl[index] = p.msl[std::clamp<int32_t>(p.currentMsl, 0, kMaxMultiSamples - 1)];
    p.currentMsl = index;
    p.mslCount = index + 1;

    TGmsl& msl = p.msl[index];
    msl.name[0] = '\0';
    msl.MIDIoutChannel = prefs_.MIDIoutChannel;
    msl.MIDIoutProgram_active = prefs_.MIDIoutProgram_active;
    msl.MIDIoutProgram = prefs_.MIDIoutProgram;
    msl.AutoSendReset = prefs_.AutoSendReset;
    msl.MIDIoutAttackVelocity = prefs_.MIDIoutAttackVelocity;
    msl.MIDIoutReleaseVelocity = prefs_.MIDIoutReleaseVelocity;
    msl.MIDIoutAfterTouch = prefs_.MIDIoutAfterTouch;
    copyText(msl.AudioInFormat, prefs_.AudioInFormat);
    copyText(msl.MIDIoutDevice, prefs_.MIDIoutDevice);
    copyText(msl.AudioInDevice, prefs_.AudioInDevice);
    for (auto& row : msl.controllerTable)
        std::fill(std::begin(row), std::end(row), uint16_t{0});
    for (auto& row : msl.parameterTable)
        std::fill(std::begin(row), std::end(row), uint16_t{0});
    resetChannelLists(msl);
    msl.recordsettings = prefs_.recordsettings;
    msl.range_start = 0;
    msl.range_end = 127;
    msl.mapTo = 0;
    for (int note = 0; note < kKeyCount; ++note)
        msl.keys[note] = makeNewKey(note);
    msl.KBrangeIn = 48;
    msl.KBrangeOut = 79;

    keepMultiSampleVisible();
    multiSampleListEdited(p);
    return Result::done();
}

Result Model::deleteMultiSample()
{
    if (!currentProject())
        return Result::done();
    Project& p = *view_;
    if (p.mslCount <= 0)
        return Result::done();
    const int removed = std::clamp<int32_t>(p.currentMsl, 0, p.mslCount - 1);
    for (int i = removed; i + 1 < p.mslCount; ++i)
        p.msl[i] = p.msl[i + 1];
    --p.mslCount;
    if (p.currentMsl >= 1 && p.currentMsl >= p.mslCount)
        --p.currentMsl;
    keepMultiSampleVisible();
    multiSampleListEdited(p);
    return Result::done();
}

Result Model::duplicateMultiSample()
{
    if (!currentMultiSample())
        return Result::done();
    Project& p = *view_;
    if (p.mslCount >= kMaxMultiSamples)
        return Result::refused(
            formatText(kTooManyMultiSamples, static_cast<long>(kMaxMultiSamples)));
    const int index = p.mslCount;
    p.msl[index] = p.msl[p.currentMsl];
    p.currentMsl = index;
    p.mslCount = index + 1;
    keepMultiSampleVisible();
    multiSampleListEdited(p);
    return Result::done();
}

Result Model::moveMultiSampleUp()
{
    if (!currentMultiSample() || view_->currentMsl <= 0)
        return Result::done();
    Project& p = *view_;
    std::swap(p.msl[p.currentMsl], p.msl[p.currentMsl - 1]);
    --p.currentMsl;
    if (!rowVisible(p.currentMsl, p.topMsl, kVisibleMultiSampleRows))
        p.topMsl = std::max(0, p.currentMsl - 4);
    multiSampleListEdited(p);
    return Result::done();
}

Result Model::moveMultiSampleDown()
{
    if (!currentMultiSample() || view_->currentMsl >= view_->mslCount - 1)
        return Result::done();
    Project& p = *view_;
    std::swap(p.msl[p.currentMsl], p.msl[p.currentMsl + 1]);
    ++p.currentMsl;
    if (!rowVisible(p.currentMsl, p.topMsl, kVisibleMultiSampleRows))
        p.topMsl = std::max(0, p.currentMsl - 1);
    multiSampleListEdited(p);
    return Result::done();
}

void Model::multiSampleListEdited(Project& p)
{
    p.modified = 1;
    const int current = p.currentMsl;
    notifyListeners([&](TonegrabberModelListener& l) {
        l.multiSampleListChanged();
        l.currentMultiSampleChanged(current);
    });
}

// ---------------------------------------------------------------- listeners

void Model::addListener(TonegrabberModelListener* listener)
{
    if (listener && std::find(listeners_.begin(), listeners_.end(), listener) == listeners_.end())
        listeners_.push_back(listener);
}

void Model::removeListener(TonegrabberModelListener* listener)
{
    listeners_.erase(std::remove(listeners_.begin(), listeners_.end(), listener), listeners_.end());
}

} // namespace tg
