// Placeholder filling over byte strings; the templates are Latin-1 text.
#include "export/templates/TemplateText.h"

#include "core/Message.h"

namespace tg {

std::string placeholder(const std::string& key)
{
    return "###" + key + "###";
}

void fillBytes(std::string& text, const std::string& key, const std::string& value)
{
    const std::string pattern = placeholder(key);
    size_t at = 0;
    while ((at = text.find(pattern, at)) != std::string::npos) {
        text.replace(at, pattern.size(), value);
        at += value.size(); // never rescan the value: it may contain "###"
    }
}

void fillText(std::string& text, const std::string& key, const std::string& value)
{
    fillBytes(text, key, toLatin1(value));
}

void fillFloat(std::string& text, const std::string& key, double value)
{
    fillBytes(text, key, formatText("%.8f", value));
}

void fillInt(std::string& text, const std::string& key, long value)
{
    fillBytes(text, key, formatText("%ld", value));
}

namespace {

// Decodes `value` as UTF-8 into code points; false when it is not valid UTF-8.
bool decodeUtf8(const std::string& value, std::u32string& out)
{
    for (size_t i = 0; i < value.size();) {
        const auto lead = static_cast<unsigned char>(value[i]);
        int extra = 0;
        char32_t point = 0;
        if (lead < 0x80) {
            point = lead;
        } else if ((lead & 0xE0) == 0xC0) {
            extra = 1;
            point = lead & 0x1F;
        } else if ((lead & 0xF0) == 0xE0) {
            extra = 2;
            point = lead & 0x0F;
        } else if ((lead & 0xF8) == 0xF0) {
            extra = 3;
            point = lead & 0x07;
        } else {
            return false;
        }
        if (i + static_cast<size_t>(extra) >= value.size() && extra > 0)
            return false;
        for (int k = 1; k <= extra; ++k) {
            const auto next = static_cast<unsigned char>(value[i + k]);
            if ((next & 0xC0) != 0x80)
                return false;
            point = (point << 6) | (next & 0x3F);
        }
        // Overlong forms are not UTF-8 either.
        if ((extra == 1 && point < 0x80) || (extra == 2 && point < 0x800) ||
            (extra == 3 && point < 0x10000))
            return false;
        out.push_back(point);
        i += static_cast<size_t>(extra) + 1;
    }
    return true;
}

} // namespace

std::string toLatin1(const std::string& value)
{
    std::u32string points;
    if (!decodeUtf8(value, points))
        return value;
    std::string out;
    out.reserve(points.size());
    for (char32_t point : points)
        out.push_back(point <= 0xFF ? static_cast<char>(point) : '?');
    return out;
}

std::string firstCharacters(const std::string& value, size_t count)
{
    return value.substr(0, count);
}

void removeOpenVelocityBounds(std::string& section, int velocityLow, int velocityHigh)
{
    auto removeAll = [&section](const std::string& attribute) {
        size_t at = 0;
        while ((at = section.find(attribute, at)) != std::string::npos) {
            size_t from = at;
            if (from > 0 && section[from - 1] == ' ')
                --from;
            section.erase(from, attribute.size() + (at - from));
            at = from;
        }
    };
    if (velocityLow == 0)
        removeAll("low=\"0\"");
    if (velocityHigh == 127)
        removeAll("high=\"127\"");
}

} // namespace tg
