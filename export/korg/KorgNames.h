// The names of the Kronos export: folder, files and the fixed-width name fields.
#pragma once

#include <string>

namespace tg {

// "%.6s%02d": the first 6 characters of the Project name and the Project number.
std::string kronosFolderName(const char* projectName, int projectNumber);
// "%.5s%02d%d": first 5 characters of the Multi-Sample name, its ordinal, the channel
// (0 left or mono, 1 right).
std::string kmpBaseName(const char* multiSampleName, int ordinal, int channel);
// The KMP's 16-byte name field: "%-14s-L" or "%-14s-R", cut to 16.
std::string kmpNameField(const char* multiSampleName, int channel);
// The KMP's 24-byte NAME chunk: "%-22s-L" or "%-22s-R", cut to 24.
std::string kmpNameChunk(const char* multiSampleName, int channel);
// "MS%03d%03d.KSF": KMP number and running sample number.
std::string ksfFileName(int kmpNumber, int sampleNumber);
// The KSF's 16-byte sample name: mono "%.12s-%03d" padded to 16; stereo "%.10s-%03d" then
// "%-14s-L" / "%-14s-R".
std::string ksfSampleName(const char* multiSampleName, int note, bool stereo, int channel);
// The KSF's 24-byte NAME chunk: mono "%.20s-%03d" padded to 24; stereo "%.18s-%03d" then
// "%-22s-L" / "%-22s-R".
std::string ksfNameChunk(const char* multiSampleName, int note, bool stereo, int channel);

} // namespace tg
