// Scanning a file name for note names, MIDI numbers and layer tags.
#include "extras/FileNameKeys.h"

#include <cctype>
#include <cstring>

namespace tg {

namespace {

bool isLetter(char c)
{
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

bool isDigit(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

// A word boundary: the string's ends or a character that is neither letter nor digit.
bool apart(const std::string& s, size_t at)
{
    return at >= s.size() || !(isLetter(s[at]) || isDigit(s[at]));
}

// The note of a note name starting at `at`, or -1.
int noteNameAt(const std::string& s, size_t at)
{
    static const int kPitch[7] = {9, 11, 0, 2, 4, 5, 7}; // A B C D E F G
    const char letter = static_cast<char>(std::toupper(static_cast<unsigned char>(s[at])));
    if (letter < 'A' || letter > 'G' || (at > 0 && isLetter(s[at - 1])))
        return -1;
    int pitch = kPitch[letter - 'A'];
    size_t i = at + 1;
    if (i < s.size() && (s[i] == '#' || s[i] == 'b')) {
        pitch += s[i] == '#' ? 1 : -1;
        ++i;
    }
    int octave = 0;
    if (i + 1 < s.size() && s[i] == '-' && s[i + 1] == '1') {
        octave = -1;
        i += 2;
    } else if (i < s.size() && isDigit(s[i])) {
        octave = s[i] - '0';
        ++i;
    } else {
        return -1;
    }
    if (i < s.size() && isDigit(s[i]))
        return -1; // "D50" is a model name, not D5
    const int note = (octave + 1) * 12 + pitch;
    return note >= 0 && note <= 127 ? note : -1;
}

bool isNoteLetterAt(const std::string& s, size_t at)
{
    const char c = static_cast<char>(std::toupper(static_cast<unsigned char>(s[at])));
    return c >= 'A' && c <= 'G' && (at == 0 || !isLetter(s[at - 1]));
}

// Whether the digits at `at` end a note-shaped token ("G#9", "Cb-1") that noteNameAt() turned
// down as out of range: those digits are an octave, not a MIDI number.
bool afterNoteLetter(const std::string& s, size_t at)
{
    size_t k = at;
    if (k > 0 && s[k - 1] == '-')
        --k;
    if (k >= 2 && (s[k - 1] == '#' || s[k - 1] == 'b') && isNoteLetterAt(s, k - 2))
        return true;
    return k >= 1 && isNoteLetterAt(s, k - 1);
}

} // namespace

int keyFromFileName(const std::string& baseName)
{
    int fromNoteName = -1;
    for (size_t i = 0; i < baseName.size(); ++i) {
        const int note = noteNameAt(baseName, i);
        if (note >= 0)
            fromNoteName = note;
    }
    if (fromNoteName >= 0)
        return fromNoteName;

    int fromNumber = -1;
    for (size_t i = 0; i < baseName.size();) {
        if (!isDigit(baseName[i])) {
            ++i;
            continue;
        }
        size_t end = i;
        while (end < baseName.size() && isDigit(baseName[end]))
            ++end;
        const bool standsAlone = (i == 0 || apart(baseName, i - 1)) && apart(baseName, end) &&
                                 !afterNoteLetter(baseName, i);
        if (standsAlone && end - i <= 3) {
            const int value = std::stoi(baseName.substr(i, end - i));
            if (value <= 127)
                fromNumber = value;
        }
        i = end;
    }
    return fromNumber;
}

int layerFromFileName(const std::string& baseName)
{
    // Longest first, so that "vel2" is not read as "v" followed by "el2".
    static const char* const kTags[] = {"velocity", "layer", "velo", "vel", "v"};
    int layer = -1;
    for (size_t i = 0; i < baseName.size(); ++i) {
        if (i > 0 && !apart(baseName, i - 1))
            continue;
        for (const char* tag : kTags) {
            const size_t length = std::strlen(tag);
            if (baseName.size() < i + length)
                continue;
            bool same = true;
            for (size_t k = 0; k < length && same; ++k)
                same = std::tolower(static_cast<unsigned char>(baseName[i + k])) == tag[k];
            if (!same)
                continue;
            size_t end = i + length;
            while (end < baseName.size() && isDigit(baseName[end]))
                ++end;
            if (end > i + length && end - (i + length) <= 3 && apart(baseName, end)) {
                layer = std::stoi(baseName.substr(i + length, end - i - length));
                break;
            }
        }
    }
    return layer;
}

bool naturalLess(const std::string& a, const std::string& b)
{
    size_t i = 0, j = 0;
    while (i < a.size() && j < b.size()) {
        if (isDigit(a[i]) && isDigit(b[j])) {
            size_t ei = i, ej = j;
            while (ei < a.size() && a[ei] == '0')
                ++ei;
            while (ej < b.size() && b[ej] == '0')
                ++ej;
            size_t di = ei, dj = ej;
            while (di < a.size() && isDigit(a[di]))
                ++di;
            while (dj < b.size() && isDigit(b[dj]))
                ++dj;
            // Without leading zeros the longer run is the larger number; equal lengths
            // compare digit by digit.
            if (di - ei != dj - ej)
                return di - ei < dj - ej;
            const int order = a.compare(ei, di - ei, b, ej, dj - ej);
            if (order != 0)
                return order < 0;
            i = di;
            j = dj;
            continue;
        }
        if (a[i] != b[j])
            return static_cast<unsigned char>(a[i]) < static_cast<unsigned char>(b[j]);
        ++i;
        ++j;
    }
    if (a.size() - i != b.size() - j)
        return a.size() - i < b.size() - j;
    return a < b; // "Kick 02" and "Kick 2" still come in one fixed order
}

} // namespace tg
