// Reading and writing the one-line instrument description, and keeping it per user.
#include "devices/InstrumentSpec.h"

#include "core/IniKeys.h"
#include "core/Message.h"

#include <QSettings>
#include <QString>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace tg {

namespace {

constexpr const char* kLv2Prefix = "lv2:";
constexpr const char* kSoundFontPrefix = "sf2:";

bool startsWith(const std::string& text, const char* prefix)
{
    return text.compare(0, std::char_traits<char>::length(prefix), prefix) == 0;
}

// A whole number or decimal with nothing after it.
bool readNumber(const std::string& text, double& value)
{
    if (text.empty())
        return false;
    errno = 0;
    char* end = nullptr;
    value = std::strtod(text.c_str(), &end);
    return errno == 0 && end == text.c_str() + text.size() && std::isfinite(value);
}

// Splits "a=1&b=2" into pairs; 0 when a part has no '=' or an empty name.
int readOptions(const std::string& text, std::vector<std::pair<std::string, std::string>>& options,
                std::string& msg)
{
    size_t start = 0;
    while (start <= text.size()) {
        size_t end = text.find('&', start);
        if (end == std::string::npos)
            end = text.size();
        const std::string part = text.substr(start, end - start);
        const size_t equals = part.find('=');
        if (equals == std::string::npos || equals == 0)
            return setMessage(msg, "Instrument option \"%s\" is not NAME=VALUE", part.c_str());
        options.emplace_back(part.substr(0, equals), part.substr(equals + 1));
        start = end + 1;
    }
    return 1;
}

int readSoundFontOption(const std::string& name, const std::string& text, InstrumentSpec& choice,
                        std::string& msg)
{
    double value = 0.0;
    if (!readNumber(text, value))
        return setMessage(msg, "Instrument option \"%s\" needs a number, not \"%s\"", name.c_str(),
                          text.c_str());
    if (name == "bank" || name == "preset") {
        const double highest = name == "bank" ? 16383.0 : 127.0;
        if (value != std::floor(value) || value < 0.0 || value > highest)
            return setMessage(msg, "SoundFont %s %s is not a whole number from 0 to %d",
                              name.c_str(), text.c_str(), int(highest));
        (name == "bank" ? choice.bank : choice.preset) = int(value);
        return 1;
    }
    if (name == "gain") {
        if (value < 0.0 || value > 10.0)
            return setMessage(msg, "SoundFont gain %s is not between 0 and 10", text.c_str());
        choice.gain = value;
        return 1;
    }
    return setMessage(msg, "SoundFont instruments have no option \"%s\" (bank, preset, gain)",
                      name.c_str());
}

std::string numberText(double value)
{
    std::string text = formatText("%.9g", value);
    return text;
}

} // namespace

int parseInstrumentSpec(const std::string& text, InstrumentSpec& choice, std::string& msg)
{
    choice = InstrumentSpec();
    const size_t question = text.find('?');
    const std::string head = text.substr(0, question);
    std::vector<std::pair<std::string, std::string>> options;
    if (question != std::string::npos && !readOptions(text.substr(question + 1), options, msg))
        return 0;

    if (startsWith(head, kLv2Prefix)) {
        choice.kind = InstrumentSpec::Kind::Lv2;
        choice.uri = head.substr(std::char_traits<char>::length(kLv2Prefix));
        if (choice.uri.empty())
            return setMessage(msg, "Instrument \"%s\" names no LV2 plug-in URI", text.c_str());
        for (const auto& [name, valueText] : options) {
            double value = 0.0;
            if (!readNumber(valueText, value))
                return setMessage(msg, "LV2 control \"%s\" needs a number, not \"%s\"",
                                  name.c_str(), valueText.c_str());
            if (std::fabs(value) > double(std::numeric_limits<float>::max()))
                return setMessage(msg, "LV2 control \"%s\" value %s is out of range", name.c_str(),
                                  valueText.c_str());
            choice.controls.emplace_back(name, float(value));
        }
        return 1;
    }

    choice.kind = InstrumentSpec::Kind::SoundFont;
    choice.path = startsWith(head, kSoundFontPrefix)
                      ? head.substr(std::char_traits<char>::length(kSoundFontPrefix))
                      : head;
    if (choice.path.empty())
        return setMessage(msg, "No instrument given: a SoundFont path or lv2:URI is needed");
    for (const auto& [name, valueText] : options)
        if (!readSoundFontOption(name, valueText, choice, msg))
            return 0;
    return 1;
}

std::string instrumentSpecText(const InstrumentSpec& choice)
{
    if (choice.kind == InstrumentSpec::Kind::Lv2) {
        std::string text = kLv2Prefix + choice.uri;
        char separator = '?';
        for (const auto& [name, value] : choice.controls) {
            text += separator + name + "=" + numberText(value);
            separator = '&';
        }
        return text;
    }
    return kSoundFontPrefix + choice.path + "?bank=" + std::to_string(choice.bank) +
           "&preset=" + std::to_string(choice.preset) + "&gain=" + numberText(choice.gain);
}

std::string storedInstrumentSpec()
{
    QSettings settings(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
    return settings.value(ini::kVstHostPluginPath).toString().toStdString();
}

int storeInstrumentSpec(const std::string& text, std::string& msg)
{
    QSettings settings(QString::fromStdString(ini::iniFilePath()), QSettings::IniFormat);
    settings.setValue(ini::kVstHostPluginPath, QString::fromStdString(text));
    settings.sync();
    if (settings.status() != QSettings::NoError)
        return setMessage(msg, "Unable to write \"%s\"", ini::iniFilePath().c_str());
    return 1;
}

} // namespace tg
