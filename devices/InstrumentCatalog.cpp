#include "devices/InstrumentCatalog.h"

#include "core/Message.h"

#include <fluidsynth.h>
#include <lilv/lilv.h>
#include <lv2/core/lv2.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace tg {

int listSoundFontPresets(const std::string& path, std::vector<SoundFontPreset>& presets,
                         std::string& msg)
{
    presets.clear();
    if (!fluid_is_soundfont(path.c_str()))
        return setMessage(msg, "'%s' is not a SoundFont file that can be read", path.c_str());
    std::unique_ptr<fluid_settings_t, decltype(&delete_fluid_settings)> settings(
        new_fluid_settings(), delete_fluid_settings);
    if (settings == nullptr)
        return setMessage(msg, "SoundFont '%s' cannot be read", path.c_str());
    // Only the preset headers are wanted: the samples stay on disk.
    fluid_settings_setint(settings.get(), "synth.dynamic-sample-loading", 1);
    std::unique_ptr<fluid_synth_t, decltype(&delete_fluid_synth)> synth(
        new_fluid_synth(settings.get()), delete_fluid_synth);
    const int id =
        synth != nullptr ? fluid_synth_sfload(synth.get(), path.c_str(), 0) : FLUID_FAILED;
    fluid_sfont_t* font =
        id != FLUID_FAILED ? fluid_synth_get_sfont_by_id(synth.get(), id) : nullptr;
    if (font == nullptr)
        return setMessage(msg, "SoundFont '%s' cannot be read", path.c_str());
    fluid_sfont_iteration_start(font);
    while (fluid_preset_t* preset = fluid_sfont_iteration_next(font)) {
        const char* name = fluid_preset_get_name(preset);
        presets.push_back({fluid_preset_get_banknum(preset), fluid_preset_get_num(preset),
                           name != nullptr ? name : ""});
    }
    std::sort(presets.begin(), presets.end(),
              [](const SoundFontPreset& a, const SoundFontPreset& b) {
                  return a.bank != b.bank ? a.bank < b.bank : a.program < b.program;
              });
    return 1;
}

namespace {

struct World {
    World() : world(lilv_world_new())
    {
        if (world != nullptr)
            lilv_world_load_all(world);
    }
    ~World()
    {
        if (world != nullptr)
            lilv_world_free(world);
    }
    LilvWorld* world;
};

struct Node {
    explicit Node(LilvNode* n) : node(n) {}
    ~Node() { lilv_node_free(node); }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    LilvNode* node;
};

std::string text(const LilvNode* node)
{
    return node != nullptr ? lilv_node_as_string(node) : "";
}

} // namespace

std::vector<Lv2InstrumentEntry> listLv2Instruments()
{
    std::vector<Lv2InstrumentEntry> entries;
    World w;
    if (w.world == nullptr)
        return entries;
    const LilvPlugins* plugins = lilv_world_get_all_plugins(w.world);
    LILV_FOREACH(plugins, i, plugins)
    {
        const LilvPlugin* plugin = lilv_plugins_get(plugins, i);
        const LilvPluginClass* kind = lilv_plugin_get_class(plugin);
        if (kind == nullptr || text(lilv_plugin_class_get_uri(kind)) != LV2_CORE__InstrumentPlugin)
            continue;
        Node name(lilv_plugin_get_name(plugin));
        entries.push_back({text(lilv_plugin_get_uri(plugin)), text(name.node)});
    }
    std::sort(
        entries.begin(), entries.end(),
        [](const Lv2InstrumentEntry& a, const Lv2InstrumentEntry& b) { return a.name < b.name; });
    return entries;
}

int listLv2Controls(const std::string& uri, std::vector<Lv2Control>& controls, std::string& msg)
{
    controls.clear();
    World w;
    if (w.world == nullptr)
        return setMessage(msg, "LV2 plug-ins cannot be listed");
    Node id(lilv_new_uri(w.world, uri.c_str()));
    const LilvPlugin* plugin =
        id.node != nullptr ? lilv_plugins_get_by_uri(lilv_world_get_all_plugins(w.world), id.node)
                           : nullptr;
    if (plugin == nullptr)
        return setMessage(msg, "LV2 instrument '%s' is not installed", uri.c_str());
    Node controlClass(lilv_new_uri(w.world, LV2_CORE__ControlPort));
    Node inputClass(lilv_new_uri(w.world, LV2_CORE__InputPort));
    const uint32_t count = lilv_plugin_get_num_ports(plugin);
    std::vector<float> minimum(count), maximum(count), defaults(count);
    lilv_plugin_get_port_ranges_float(plugin, minimum.data(), maximum.data(), defaults.data());
    for (uint32_t i = 0; i < count; ++i) {
        const LilvPort* port = lilv_plugin_get_port_by_index(plugin, i);
        if (!lilv_port_is_a(plugin, port, controlClass.node) ||
            !lilv_port_is_a(plugin, port, inputClass.node))
            continue;
        Node name(lilv_port_get_name(plugin, port));
        const auto finite = [](float v, float otherwise) { return std::isnan(v) ? otherwise : v; };
        const float low = finite(minimum[i], 0.0f);
        const float high = std::max(low, finite(maximum[i], 1.0f));
        controls.push_back({text(lilv_port_get_symbol(plugin, port)), text(name.node), low, high,
                            std::clamp(finite(defaults[i], low), low, high)});
    }
    return 1;
}

} // namespace tg
