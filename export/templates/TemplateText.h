// Filling "###key###" placeholders of the description templates with values.
#pragma once

#include <string>

namespace tg {

// The placeholder text of `key`: "###" + key + "###".
std::string placeholder(const std::string& key);

// Replaces every placeholder of `key` in `text` by `value` as it stands (bytes).
void fillBytes(std::string& text, const std::string& key, const std::string& value);

// Replaces every placeholder of `key` by `value` written in Latin-1 (see toLatin1).
void fillText(std::string& text, const std::string& key, const std::string& value);

// Replaces every placeholder of `key` by `value` in fixed notation with 8 decimals.
void fillFloat(std::string& text, const std::string& key, double value);

// Replaces every placeholder of `key` by `value` in decimal.
void fillInt(std::string& text, const std::string& key, long value);

// The value converted to Latin-1: valid UTF-8 is decoded, characters beyond Latin-1 become
// '?'; text that is not valid UTF-8 is taken to be Latin-1 already and kept byte for byte.
std::string toLatin1(const std::string& value);

// The first `count` bytes of `value` (user texts are cut to 24 characters).
std::string firstCharacters(const std::string& value, size_t count);

// Removes "low=\"0\"" when `velocityLow` is 0 and "high=\"127\"" when `velocityHigh` is 127
// (together with one blank before each), so that the target treats the range as open.
void removeOpenVelocityBounds(std::string& section, int velocityLow, int velocityHigh);

} // namespace tg
