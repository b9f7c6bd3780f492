// The key tables of the settings accessor and the lookup that maps a key to its field.
#include "core/SettingsAccessor.h"

#include "core/Model.h"

#include <algorithm>
#include <cstring>

namespace tg {

// Texts that may fill their whole stored field need a byte for the terminator in memory.
static_assert(sizeof(TGmsl::AudioInDevice) > kAudioInDeviceSize);
static_assert(sizeof(TGmsl::MIDIoutDevice) > kMidiOutDeviceSize);
static_assert(sizeof(RecordSettings::xfadetype) > kCurveNameSize);
static_assert(sizeof(RecordSettings::bfxfadetype) > kCurveNameSize);
static_assert(sizeof(Preferences::AudioInDevice) > kAudioInDeviceSize);
static_assert(sizeof(Preferences::MIDIoutDevice) > kMidiOutDeviceSize);

namespace {

struct TextBuffer {
    char* data;
    size_t size;
};

template <typename T> struct NumberKey {
    const char* name;          // the dotted key without its prefix
    T* (*msl)(TGmsl&);         // nullptr: no such "msl." key
    T* (*prefs)(Preferences&); // nullptr: no such "prefs." key
};

struct TextKey {
    const char* name;
    size_t limit; // characters copied at most
    TextBuffer (*msl)(TGmsl&);
    TextBuffer (*prefs)(Preferences&);
};

#define TG_TEXT(object, field)                                                                     \
    [](auto& object) { return TextBuffer{object.field, sizeof object.field}; }
#define TG_FIELD(type, object, field) [](type& object) { return &object.field; }

const TextKey kTextKeys[] = {
    {"AudioInDevice", kAudioInDeviceSize, TG_TEXT(m, AudioInDevice), TG_TEXT(p, AudioInDevice)},
    {"AudioInFormat", 36, TG_TEXT(m, AudioInFormat), TG_TEXT(p, AudioInFormat)},
    {"MIDIoutDevice", kMidiOutDeviceSize, TG_TEXT(m, MIDIoutDevice), TG_TEXT(p, MIDIoutDevice)},
    {"recordsettings.xfadetype", kCurveNameSize, TG_TEXT(m, recordsettings.xfadetype),
     TG_TEXT(p, recordsettings.xfadetype)},
    {"recordsettings.bfxfadetype", kCurveNameSize, TG_TEXT(m, recordsettings.bfxfadetype),
     TG_TEXT(p, recordsettings.bfxfadetype)},
    {"datapath", kPathSize - 1, nullptr, TG_TEXT(p, datapath)},
    {"TempDir", kPrefsFolderSize - 1, nullptr, TG_TEXT(p, TempDir)},
    {"SampleEditor", kPrefsFolderSize - 1, nullptr, TG_TEXT(p, SampleEditor)},
};

#define TG_BOTH(type, field)                                                                       \
    {                                                                                              \
#field, TG_FIELD(TGmsl, m, field), TG_FIELD(Preferences, p, field)                         \
    }
#define TG_MSL(name, field)                                                                        \
    {                                                                                              \
        name, TG_FIELD(TGmsl, m, field), nullptr                                                   \
    }
#define TG_PREFS(field)                                                                            \
    {                                                                                              \
#field, nullptr, TG_FIELD(Preferences, p, field)                                           \
    }
#define TG_RECORD(field)                                                                           \
    {                                                                                              \
        "recordsettings." #field, TG_FIELD(TGmsl, m, recordsettings.field),                        \
            TG_FIELD(Preferences, p, recordsettings.field)                                         \
    }

const NumberKey<uint16_t> kShortKeys[] = {
    TG_BOTH(uint16_t, MIDIoutChannel),
    TG_BOTH(uint16_t, AutoSendReset),
    TG_BOTH(uint16_t, MIDIoutProgram_active),
    TG_BOTH(uint16_t, MIDIoutProgram),
    TG_BOTH(uint16_t, MIDIoutAttackVelocity),
    TG_BOTH(uint16_t, MIDIoutReleaseVelocity),
    TG_BOTH(uint16_t, MIDIoutAfterTouch),
    TG_MSL("KBrangeIn", KBrangeIn),
    TG_MSL("KBrangeOut", KBrangeOut),
    TG_PREFS(ClickPopRedFade_in),
    TG_PREFS(ClickPopRedFade_out),
    TG_PREFS(promptWhenDeleting),
    TG_PREFS(showPrjWizardAtStartup),
    TG_PREFS(loadPrjAtStartup),
};

const NumberKey<int32_t> kLongKeys[] = {
    TG_RECORD(latency),
    TG_MSL("mappingsettings.mapTo", mapTo),
    TG_MSL("mappingsettings.range_start", range_start),
    TG_MSL("mappingsettings.range_end", range_end),
};

const NumberKey<uint8_t> kCharKeys[] = {
    TG_RECORD(notelength2_active), TG_RECORD(releaselength2_active),
    TG_RECORD(clickpopred),        TG_RECORD(zerocrossing),
    TG_RECORD(autoloop),           TG_RECORD(autogain),
};

const NumberKey<double> kDoubleKeys[] = {
    TG_RECORD(notelength1),        TG_RECORD(notelength2),      TG_RECORD(releaselength1),
    TG_RECORD(releaselength2),     TG_RECORD(thresPrecisionIn), TG_RECORD(thresPrecisionOut),
    TG_RECORD(recpause),           TG_RECORD(loopsearchlength), TG_RECORD(loopstart),
    TG_RECORD(loopoutsearchstart), TG_RECORD(xfadelength),      TG_RECORD(bfxfadelength),
};

#undef TG_TEXT
#undef TG_FIELD
#undef TG_BOTH
#undef TG_MSL
#undef TG_PREFS
#undef TG_RECORD

enum class Target { None, MultiSample, Preferences };

Target targetOf(const std::string& key)
{
    if (key.find("msl_") != std::string::npos)
        return Target::MultiSample;
    if (key.find("prefs_") != std::string::npos)
        return Target::Preferences;
    return Target::None;
}

// Whether `key` is `prefix` + the table name with its dots written as underscores.
bool keyMatches(const std::string& key, const char* prefix, const char* name)
{
    std::string expected = std::string(prefix) + name;
    std::replace(expected.begin(), expected.end(), '.', '_');
    return key == expected;
}

// The first entry of `table` that `key` names under its target, or nullptr.
template <typename Entry, size_t N>
const Entry* findEntry(const Entry (&table)[N], const std::string& key, Target target)
{
    for (const Entry& entry : table) {
        if (target == Target::MultiSample && entry.msl && keyMatches(key, "msl_", entry.name))
            return &entry;
        if (target == Target::Preferences && entry.prefs && keyMatches(key, "prefs_", entry.name))
            return &entry;
    }
    return nullptr;
}

// Where a key's value lives right now: the entry and the record it is read from.
template <typename Entry> struct Resolved {
    const Entry* entry = nullptr;
    TGmsl* msl = nullptr;
    Preferences* prefs = nullptr;
};

template <typename Entry, size_t N>
Resolved<Entry> resolve(Model& model, const Entry (&table)[N], const std::string& key)
{
    Resolved<Entry> resolved;
    const Target target = targetOf(key);
    const Entry* entry = findEntry(table, key, target);
    if (!entry)
        return resolved;
    if (target == Target::MultiSample) {
        resolved.msl = model.currentMultiSample();
        if (!resolved.msl)
            return resolved;
    } else {
        resolved.prefs = &model.preferences();
    }
    resolved.entry = entry;
    return resolved;
}

void changed(Model& model, const std::string& key, bool multiSample)
{
    if (multiSample)
        model.currentProject()->modified = 1;
    model.notifyListeners([&](TonegrabberModelListener& l) { l.settingChanged(key); });
}

template <typename T, size_t N>
void setNumber(Model& model, const NumberKey<T> (&table)[N], const std::string& key, T value,
               bool& ok)
{
    const auto resolved = resolve(model, table, key);
    ok = resolved.entry != nullptr;
    if (!ok)
        return;
    *(resolved.msl ? resolved.entry->msl(*resolved.msl) : resolved.entry->prefs(*resolved.prefs)) =
        value;
    changed(model, key, resolved.msl != nullptr);
}

template <typename T, size_t N>
T getNumber(Model& model, const NumberKey<T> (&table)[N], const std::string& key, bool& ok)
{
    const auto resolved = resolve(model, table, key);
    ok = resolved.entry != nullptr;
    if (!ok)
        return T{};
    return *(resolved.msl ? resolved.entry->msl(*resolved.msl)
                          : resolved.entry->prefs(*resolved.prefs));
}

TextBuffer textBuffer(const Resolved<TextKey>& resolved)
{
    return resolved.msl ? resolved.entry->msl(*resolved.msl)
                        : resolved.entry->prefs(*resolved.prefs);
}

template <typename Entry, size_t N> bool knownIn(const Entry (&table)[N], const std::string& key)
{
    return findEntry(table, key, targetOf(key)) != nullptr;
}

} // namespace

void setSettingText(Model& model, const std::string& key, const std::string& value, bool& ok)
{
    const auto resolved = resolve(model, kTextKeys, key);
    ok = resolved.entry != nullptr;
    if (!ok)
        return;
    const TextBuffer buffer = textBuffer(resolved);
    // The whole field is cleared first so that no rest of a longer old text reaches a file.
    const size_t length =
        std::min({std::strlen(value.c_str()), resolved.entry->limit, buffer.size - 1});
    std::memset(buffer.data, 0, buffer.size);
    std::memcpy(buffer.data, value.data(), length);
    changed(model, key, resolved.msl != nullptr);
}

std::string settingText(Model& model, const std::string& key, bool& ok)
{
    const auto resolved = resolve(model, kTextKeys, key);
    ok = resolved.entry != nullptr;
    if (!ok)
        return {};
    const TextBuffer buffer = textBuffer(resolved);
    return std::string(buffer.data, strnlen(buffer.data, buffer.size));
}

void setSettingShort(Model& model, const std::string& key, int16_t value, bool& ok)
{
    setNumber(model, kShortKeys, key, static_cast<uint16_t>(value), ok);
}

int16_t settingShort(Model& model, const std::string& key, bool& ok)
{
    return static_cast<int16_t>(getNumber(model, kShortKeys, key, ok));
}

void setSettingLong(Model& model, const std::string& key, int32_t value, bool& ok)
{
    setNumber(model, kLongKeys, key, value, ok);
}

int32_t settingLong(Model& model, const std::string& key, bool& ok)
{
    return getNumber(model, kLongKeys, key, ok);
}

void setSettingChar(Model& model, const std::string& key, uint8_t value, bool& ok)
{
    setNumber(model, kCharKeys, key, value, ok);
}

uint8_t settingChar(Model& model, const std::string& key, bool& ok)
{
    return getNumber(model, kCharKeys, key, ok);
}

void setSettingDouble(Model& model, const std::string& key, double value, bool& ok)
{
    setNumber(model, kDoubleKeys, key, value, ok);
}

double settingDouble(Model& model, const std::string& key, bool& ok)
{
    return getNumber(model, kDoubleKeys, key, ok);
}

bool findSettingKind(const std::string& key, SettingKind& kind)
{
    if (knownIn(kTextKeys, key))
        kind = SettingKind::Text;
    else if (knownIn(kShortKeys, key))
        kind = SettingKind::Short;
    else if (knownIn(kLongKeys, key))
        kind = SettingKind::Long;
    else if (knownIn(kCharKeys, key))
        kind = SettingKind::Char;
    else if (knownIn(kDoubleKeys, key))
        kind = SettingKind::Double;
    else
        return false;
    return true;
}

namespace {

template <typename Entry, size_t N>
void appendKeys(const Entry (&table)[N], bool multiSample, SettingKind kind,
                std::vector<SettingKey>& keys)
{
    for (const Entry& entry : table) {
        if (multiSample ? !entry.msl : !entry.prefs)
            continue;
        std::string key = std::string(multiSample ? "msl." : "prefs.") + entry.name;
        std::replace(key.begin(), key.end(), '.', '_');
        keys.push_back({key, kind});
    }
}

} // namespace

std::vector<SettingKey> settingKeys(const std::string& prefix)
{
    const bool multiSample = prefix == "msl";
    std::vector<SettingKey> keys;
    if (!multiSample && prefix != "prefs")
        return keys;
    appendKeys(kTextKeys, multiSample, SettingKind::Text, keys);
    appendKeys(kShortKeys, multiSample, SettingKind::Short, keys);
    appendKeys(kLongKeys, multiSample, SettingKind::Long, keys);
    appendKeys(kCharKeys, multiSample, SettingKind::Char, keys);
    appendKeys(kDoubleKeys, multiSample, SettingKind::Double, keys);
    return keys;
}

bool setCurrentSettingsAsDefault(Model& model)
{
    const TGmsl* msl = model.currentMultiSample();
    if (!msl)
        return false;
    Preferences& prefs = model.preferences();
    std::memcpy(prefs.AudioInDevice, msl->AudioInDevice, sizeof prefs.AudioInDevice);
    std::memcpy(prefs.AudioInFormat, msl->AudioInFormat, sizeof prefs.AudioInFormat);
    std::memcpy(prefs.MIDIoutDevice, msl->MIDIoutDevice, sizeof prefs.MIDIoutDevice);
    prefs.MIDIoutChannel = msl->MIDIoutChannel;
    prefs.AutoSendReset = msl->AutoSendReset;
    prefs.MIDIoutProgram_active = msl->MIDIoutProgram_active;
    prefs.MIDIoutProgram = msl->MIDIoutProgram;
    prefs.MIDIoutAttackVelocity = msl->MIDIoutAttackVelocity;
    prefs.MIDIoutReleaseVelocity = msl->MIDIoutReleaseVelocity;
    prefs.MIDIoutAfterTouch = msl->MIDIoutAfterTouch;
    prefs.recordsettings = msl->recordsettings;
    model.notifyListeners([](TonegrabberModelListener& l) { l.preferencesChanged(); });
    return true;
}

} // namespace tg
