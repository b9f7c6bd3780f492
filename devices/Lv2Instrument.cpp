// lilv behind the hosted-instrument interface: port wiring, MIDI as atom events, and the
// host features a plain instrument asks for (URID map, block length bounds).
#include "devices/Lv2Instrument.h"

#include "core/Message.h"

#include <lilv/lilv.h>
#include <lv2/atom/atom.h>
#include <lv2/atom/util.h>
#include <lv2/buf-size/buf-size.h>
#include <lv2/core/lv2.h>
#include <lv2/midi/midi.h>
#include <lv2/options/options.h>
#include <lv2/urid/urid.h>

#include <algorithm>
#include <bitset>
#include <cmath>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

namespace tg {

namespace {

// Frames per run() call; longer renders run in blocks of this size.
constexpr uint32_t kBlockFrames = 256;
// Bytes of each atom port buffer: room for a few hundred MIDI events per block.
constexpr uint32_t kAtomBytes = 8192;

// The URID map the plug-in gets. A plug-in may map from its own threads, hence the lock;
// the host maps every URI it needs before the first run.
class UridMap {
  public:
    LV2_URID map(const char* uri)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        auto found = ids_.find(uri);
        if (found != ids_.end())
            return found->second;
        const LV2_URID id = LV2_URID(ids_.size() + 1);
        ids_.emplace(uri, id);
        uris_.emplace_back(uri);
        return id;
    }
    const char* unmap(LV2_URID id)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return id >= 1 && id <= uris_.size() ? uris_[id - 1].c_str() : nullptr;
    }

    static LV2_URID mapCallback(LV2_URID_Map_Handle handle, const char* uri)
    {
        return static_cast<UridMap*>(handle)->map(uri);
    }
    static const char* unmapCallback(LV2_URID_Unmap_Handle handle, LV2_URID id)
    {
        return static_cast<UridMap*>(handle)->unmap(id);
    }

  private:
    std::mutex mutex_;
    std::map<std::string, LV2_URID> ids_;
    std::vector<std::string> uris_;
};

// Frees lilv nodes at the end of a scope.
struct Node {
    LilvNode* node;
    explicit Node(LilvNode* n) : node(n) {}
    ~Node() { lilv_node_free(node); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    operator const LilvNode*() const { return node; }
};

struct AtomBuffer {
    std::vector<uint64_t> storage = std::vector<uint64_t>(kAtomBytes / 8, 0);
    LV2_Atom_Sequence* sequence() { return reinterpret_cast<LV2_Atom_Sequence*>(storage.data()); }
};

class Lv2Instrument final : public HostedInstrument {
  public:
    ~Lv2Instrument() override
    {
        if (instance_ != nullptr) {
            if (active_)
                lilv_instance_deactivate(instance_);
            lilv_instance_free(instance_);
        }
        if (world_ != nullptr)
            lilv_world_free(world_);
    }

    int open(const InstrumentSpec& choice, int32_t sampleRate, std::string& msg)
    {
        rate_ = sampleRate;
        world_ = lilv_world_new();
        if (world_ == nullptr)
            return setMessage(msg, "LV2 plug-ins cannot be listed");
        lilv_world_load_all(world_);
        Node uri(lilv_new_uri(world_, choice.uri.c_str()));
        const LilvPlugin* plugin =
            uri.node != nullptr ? lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world_), uri)
                                : nullptr;
        if (plugin == nullptr)
            return setMessage(msg, "LV2 instrument '%s' is not installed", choice.uri.c_str());
        if (!checkFeatures(plugin, choice.uri, msg) || !planPorts(plugin, choice, msg))
            return 0;

        Node name(lilv_plugin_get_name(plugin));
        description_ = formatText("LV2 '%s' (%s)", choice.uri.c_str(),
                                  name.node != nullptr ? lilv_node_as_string(name) : "");
        midiEventType_ = urids_.map(LV2_MIDI__MidiEvent);
        sequenceType_ = urids_.map(LV2_ATOM__Sequence);
        chunkType_ = urids_.map(LV2_ATOM__Chunk);

        instance_ = lilv_plugin_instantiate(plugin, sampleRate, features_.data());
        if (instance_ == nullptr)
            return setMessage(msg, "LV2 instrument '%s' cannot be started at %d Hz",
                              choice.uri.c_str(), int(sampleRate));
        connectPorts();
        lilv_instance_activate(instance_);
        active_ = true;
        return 1;
    }

    void sendMidi(uint8_t status, uint8_t data1, uint8_t data2) override
    {
        const uint8_t kind = status & 0xf0;
        const int channel = status & 0x0f;
        if (kind == 0x90 && data2 > 0)
            held_[size_t(channel * 128 + (data1 & 0x7f))] = true;
        else if (kind == 0x80 || kind == 0x90)
            held_[size_t(channel * 128 + (data1 & 0x7f))] = false;
        queueEvent(status, data1 & 0x7f, data2 & 0x7f);
    }

    void resetNotes() override
    {
        for (int channel = 0; channel < 16; ++channel) {
            for (int key = 0; key < 128; ++key)
                if (held_[size_t(channel * 128 + key)])
                    queueEvent(uint8_t(0x80 | channel), uint8_t(key), 0);
            queueEvent(uint8_t(0xb0 | channel), 120, 0); // All Sound Off
            queueEvent(uint8_t(0xb0 | channel), 123, 0); // All Notes Off
        }
        held_.reset();
    }

    void render(float* left, float* right, uint32_t frames) override
    {
        while (frames > 0) {
            const uint32_t count = std::min(frames, kBlockFrames);
            runBlock(count);
            std::memcpy(left, outputs_[0].data(), count * sizeof(float));
            std::memcpy(right, outputs_[outputs_.size() > 1 ? 1 : 0].data(), count * sizeof(float));
            left += count;
            right += count;
            frames -= count;
        }
    }

    int32_t sampleRate() const override { return rate_; }
    std::string description() const override { return description_; }

  private:
    enum class PortUse { Control, ControlOut, AudioOut, AudioIn, MidiIn, AtomOut, Other };

    // Every feature the plug-in requires must be one this host provides.
    int checkFeatures(const LilvPlugin* plugin, const std::string& uri, std::string& msg)
    {
        options_ = {{LV2_OPTIONS_INSTANCE, 0, urids_.map(LV2_BUF_SIZE__minBlockLength),
                     sizeof(int32_t), urids_.map(LV2_ATOM__Int), &minBlock_},
                    {LV2_OPTIONS_INSTANCE, 0, urids_.map(LV2_BUF_SIZE__maxBlockLength),
                     sizeof(int32_t), urids_.map(LV2_ATOM__Int), &maxBlock_},
                    {LV2_OPTIONS_INSTANCE, 0, urids_.map(LV2_BUF_SIZE__nominalBlockLength),
                     sizeof(int32_t), urids_.map(LV2_ATOM__Int), &maxBlock_},
                    {LV2_OPTIONS_INSTANCE, 0, urids_.map(LV2_BUF_SIZE__sequenceSize),
                     sizeof(int32_t), urids_.map(LV2_ATOM__Int), &sequenceBytes_},
                    {LV2_OPTIONS_INSTANCE, 0, 0, 0, 0, nullptr}};
        map_ = {&urids_, &UridMap::mapCallback};
        unmap_ = {&urids_, &UridMap::unmapCallback};
        featureList_ = {{LV2_URID__map, &map_},
                        {LV2_URID__unmap, &unmap_},
                        {LV2_OPTIONS__options, options_.data()},
                        {LV2_BUF_SIZE__boundedBlockLength, nullptr}};
        for (LV2_Feature& feature : featureList_)
            features_.push_back(&feature);
        features_.push_back(nullptr);

        LilvNodes* required = lilv_plugin_get_required_features(plugin);
        int ok = 1;
        LILV_FOREACH(nodes, i, required)
        {
            const char* name = lilv_node_as_uri(lilv_nodes_get(required, i));
            const bool known =
                std::any_of(featureList_.begin(), featureList_.end(),
                            [&](const LV2_Feature& f) { return std::strcmp(f.URI, name) == 0; });
            if (!known) {
                ok = setMessage(msg, "LV2 instrument '%s' needs the host feature <%s>", uri.c_str(),
                                name);
                break;
            }
        }
        lilv_nodes_free(required);
        return ok;
    }

    // Sorts the ports by use and sets the control values; the instrument must take MIDI and
    // give audio.
    int planPorts(const LilvPlugin* plugin, const InstrumentSpec& choice, std::string& msg)
    {
        Node audioClass(lilv_new_uri(world_, LV2_CORE__AudioPort));
        Node controlClass(lilv_new_uri(world_, LV2_CORE__ControlPort));
        Node inputClass(lilv_new_uri(world_, LV2_CORE__InputPort));
        Node outputClass(lilv_new_uri(world_, LV2_CORE__OutputPort));
        Node atomClass(lilv_new_uri(world_, LV2_ATOM__AtomPort));
        Node midiEvent(lilv_new_uri(world_, LV2_MIDI__MidiEvent));
        Node optional(lilv_new_uri(world_, LV2_CORE__connectionOptional));

        const uint32_t count = lilv_plugin_get_num_ports(plugin);
        uses_.assign(count, PortUse::Other);
        controls_.assign(count, 0.0f);
        std::vector<float> defaults(count, 0.0f);
        lilv_plugin_get_port_ranges_float(plugin, nullptr, nullptr, defaults.data());
        int audioOuts = 0;
        bool midiIn = false;
        for (uint32_t i = 0; i < count; ++i) {
            const LilvPort* port = lilv_plugin_get_port_by_index(plugin, i);
            const bool isInput = lilv_port_is_a(plugin, port, inputClass);
            const bool isOutput = lilv_port_is_a(plugin, port, outputClass);
            if (lilv_port_is_a(plugin, port, controlClass)) {
                uses_[i] = isInput ? PortUse::Control : PortUse::ControlOut;
                controls_[i] = std::isnan(defaults[i]) ? 0.0f : defaults[i];
            } else if (lilv_port_is_a(plugin, port, audioClass)) {
                uses_[i] = isOutput ? PortUse::AudioOut : PortUse::AudioIn;
                audioOuts += isOutput ? 1 : 0;
            } else if (lilv_port_is_a(plugin, port, atomClass)) {
                const bool takesMidi = lilv_port_supports_event(plugin, port, midiEvent);
                if (isInput && takesMidi && !midiIn) {
                    uses_[i] = PortUse::MidiIn;
                    midiIn = true;
                } else {
                    uses_[i] = isOutput ? PortUse::AtomOut : PortUse::Other;
                }
            } else if (!lilv_port_has_property(plugin, port, optional)) {
                return setMessage(msg,
                                  "LV2 instrument '%s' has port %u of a kind this host "
                                  "cannot feed",
                                  choice.uri.c_str(), i);
            }
        }
        if (!midiIn)
            return setMessage(msg, "LV2 plug-in '%s' takes no MIDI: it is not an instrument",
                              choice.uri.c_str());
        if (audioOuts == 0)
            return setMessage(msg, "LV2 plug-in '%s' has no audio output", choice.uri.c_str());

        for (const auto& [symbol, value] : choice.controls) {
            Node symbolNode(lilv_new_string(world_, symbol.c_str()));
            const LilvPort* port = lilv_plugin_get_port_by_symbol(plugin, symbolNode);
            const uint32_t index = port != nullptr ? lilv_port_get_index(plugin, port) : count;
            if (index >= count || uses_[index] != PortUse::Control)
                return setMessage(msg, "LV2 instrument '%s' has no control input '%s'",
                                  choice.uri.c_str(), symbol.c_str());
            controls_[index] = value;
        }
        return 1;
    }

    // Every buffer is made before any is handed to the plug-in, so none moves afterwards.
    void connectPorts()
    {
        silence_.assign(kBlockFrames, 0.0f);
        const auto countOf = [&](PortUse use) {
            return std::count(uses_.begin(), uses_.end(), use);
        };
        outputs_.assign(size_t(countOf(PortUse::AudioOut)), std::vector<float>(kBlockFrames, 0.0f));
        atomOuts_.resize(size_t(countOf(PortUse::AtomOut)));
        size_t audioIndex = 0;
        size_t atomIndex = 0;
        for (uint32_t i = 0; i < uses_.size(); ++i) {
            void* where = nullptr;
            switch (uses_[i]) {
            case PortUse::Control:
            case PortUse::ControlOut:
                where = &controls_[i];
                break;
            case PortUse::AudioOut:
                where = outputs_[audioIndex++].data();
                break;
            case PortUse::AudioIn:
                where = silence_.data();
                break;
            case PortUse::MidiIn:
                where = midiIn_.sequence();
                break;
            case PortUse::AtomOut:
                where = atomOuts_[atomIndex++].sequence();
                break;
            case PortUse::Other:
                break;
            }
            lilv_instance_connect_port(instance_, i, where);
        }
        clearMidiIn();
    }

    void clearMidiIn()
    {
        LV2_Atom_Sequence* sequence = midiIn_.sequence();
        sequence->atom.type = sequenceType_;
        sequence->body.unit = 0;
        sequence->body.pad = 0;
        lv2_atom_sequence_clear(sequence);
    }

    // Render thread: appends a MIDI event at frame 0 of the next block (dropped when the
    // block's event buffer is full, which only a flood of messages within 6 ms can do).
    void queueEvent(uint8_t status, uint8_t data1, uint8_t data2)
    {
        struct {
            LV2_Atom_Event event;
            uint8_t bytes[8];
        } message{};
        message.event.time.frames = 0;
        message.event.body.type = midiEventType_;
        message.event.body.size = 3;
        message.bytes[0] = status;
        message.bytes[1] = data1;
        message.bytes[2] = data2;
        lv2_atom_sequence_append_event(midiIn_.sequence(), kAtomBytes, &message.event);
    }

    void runBlock(uint32_t frames)
    {
        for (AtomBuffer& out : atomOuts_) {
            out.sequence()->atom.type = chunkType_;
            out.sequence()->atom.size = kAtomBytes - sizeof(LV2_Atom);
        }
        lilv_instance_run(instance_, frames);
        clearMidiIn();
    }

    LilvWorld* world_ = nullptr;
    LilvInstance* instance_ = nullptr;
    bool active_ = false;
    int32_t rate_ = 0;
    std::string description_;
    UridMap urids_;
    LV2_URID_Map map_{};
    LV2_URID_Unmap unmap_{};
    int32_t minBlock_ = 1;
    int32_t maxBlock_ = int32_t(kBlockFrames);
    int32_t sequenceBytes_ = int32_t(kAtomBytes);
    std::vector<LV2_Options_Option> options_;
    std::vector<LV2_Feature> featureList_;
    std::vector<const LV2_Feature*> features_;
    LV2_URID midiEventType_ = 0;
    LV2_URID sequenceType_ = 0;
    LV2_URID chunkType_ = 0;
    std::vector<PortUse> uses_;
    std::vector<float> controls_;
    std::vector<std::vector<float>> outputs_;
    std::vector<float> silence_;
    AtomBuffer midiIn_;
    std::vector<AtomBuffer> atomOuts_;
    std::bitset<16 * 128> held_;
};

} // namespace

std::unique_ptr<HostedInstrument> openLv2Instrument(const InstrumentSpec& choice,
                                                    int32_t sampleRate, std::string& msg)
{
    auto instrument = std::make_unique<Lv2Instrument>();
    if (!instrument->open(choice, sampleRate, msg))
        return nullptr;
    return instrument;
}

} // namespace tg
