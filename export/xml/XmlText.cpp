// UTF-8 checks, Latin-1 widening, attribute escaping and portable file names.
#include "export/xml/XmlText.h"

#include <cstdint>

namespace tg {
namespace {

bool isUtf8(const std::string& text)
{
    size_t i = 0;
    while (i < text.size()) {
        const uint8_t lead = static_cast<uint8_t>(text[i]);
        size_t follow = 0;
        if (lead < 0x80)
            follow = 0;
        else if (lead >= 0xC2 && lead <= 0xDF)
            follow = 1;
        else if (lead >= 0xE0 && lead <= 0xEF)
            follow = 2;
        else if (lead >= 0xF0 && lead <= 0xF4)
            follow = 3;
        else
            return false;
        if (i + follow >= text.size() && follow > 0)
            return false;
        for (size_t k = 1; k <= follow; ++k)
            if ((static_cast<uint8_t>(text[i + k]) & 0xC0) != 0x80)
                return false;
        i += follow + 1;
    }
    return true;
}

} // namespace

std::string utf8FromName(const std::string& text)
{
    if (isUtf8(text))
        return text;
    std::string out;
    out.reserve(text.size() * 2);
    for (char c : text) {
        const uint8_t byte = static_cast<uint8_t>(c);
        if (byte < 0x80) {
            out.push_back(c);
        } else {
            out.push_back(static_cast<char>(0xC0 | (byte >> 6)));
            out.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
        }
    }
    return out;
}

std::string escapeXml(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&apos;";
            break;
        default:
            // Control characters are not allowed in XML 1.0 text.
            out.push_back(static_cast<uint8_t>(c) < 0x20 ? ' ' : c);
        }
    }
    return out;
}

std::string xmlAttribute(const std::string& text)
{
    return escapeXml(utf8FromName(text));
}

std::string portableFileName(const std::string& text)
{
    std::string out;
    for (char c : text) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || c == ' ' || c == '#' || c == '-' || c == '_' ||
                           c == '.' || c == '(' || c == ')';
        out.push_back(plain ? c : '_');
    }
    // A leading dot would hide the file; an empty name would be no file at all.
    if (out.empty() || out[0] == '.')
        out.insert(out.begin(), '_');
    return out;
}

} // namespace tg
