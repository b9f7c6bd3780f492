// What a sample file's name says about where it belongs: its key (a note name or a MIDI
// number) and its velocity layer (a layer tag), for files that carry no root key themselves.
#pragma once

#include <string>

namespace tg {

// The MIDI note `baseName` (a file name without folder and extension) names: the last note
// name in it, written as noteName() writes them ("C-1" .. "G9", "C#3") or with a flat ("Db3"),
// letter case free, standing apart from letters before it and digits after it; or, when there
// is none, the last number 0..127 standing on its own ("Piano 60", "Piano-060"). -1 when the
// name gives no key.
int keyFromFileName(const std::string& baseName);

// The velocity layer a tag in `baseName` gives: the last of "v2", "vel2", "velo2",
// "velocity2", "layer2" (letter case free, 0..999) standing on its own. -1 without a tag.
int layerFromFileName(const std::string& baseName);

// Orders file names as people count: digit runs compare by value ("Kick 2" before
// "Kick 10"), everything else byte by byte.
bool naturalLess(const std::string& a, const std::string& b);

} // namespace tg
