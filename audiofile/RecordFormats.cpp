// The 28 recording formats and the lookup from a stored name to a format record.
#include "audiofile/RecordFormats.h"

#include <cstring>

namespace tg {

namespace {

// The first twenty codes are the wave-format capability bits of the Windows multimedia
// interface, the 24-bit rows carry codes of our own; only the codes select the format.
const RecordFormatRow kRows[kRecordFormatCount] = {
    {0x1, "11.025KHz, Mono, 8bit", 11025, 1, 8},
    {0x2, "11.025KHz, Stereo, 8bit", 11025, 2, 8},
    {0x10, "22.05KHz, Mono, 8bit", 22050, 1, 8},
    {0x20, "22.05KHz, Stereo, 8bit", 22050, 2, 8},
    {0x100, "44.1KHz, Mono, 8bit", 44100, 1, 8},
    {0x200, "44.1KHz, Stereo, 8bit", 44100, 2, 8},
    {0x1000, "48KHz, Mono, 8bit", 48000, 1, 8},
    {0x2000, "48KHz, Stereo, 8bit", 48000, 2, 8},
    {0x10000, "96KHz, Mono, 8bit", 96000, 1, 8},
    {0x20000, "96KHz, Stereo, 8bit", 96000, 2, 8},
    {0x4, "11.025KHz, Mono, 16bit", 11025, 1, 16},
    {0x8, "11.025KHz, Stereo, 16bit", 11025, 2, 16},
    {0x40, "22.05KHz, Mono, 16bit", 22050, 1, 16},
    {0x80, "22.05KHz, Stereo, 16bit", 22050, 2, 16},
    {0x400, "44.1KHz, Mono, 16bit", 44100, 1, 16},
    {0x800, "44.1KHz, Stereo, 16bit", 44100, 2, 16},
    {0x4000, "48KHz, Mono, 16bit", 48000, 1, 16},
    {0x8000, "48KHz, Stereo, 16bit", 48000, 2, 16},
    {0x40000, "96KHz, Mono, 16bit", 96000, 1, 16},
    {0x80000, "96KHz, Stereo, 16bit", 96000, 2, 16},
    {0x100010, "44.1KHz, Mono, 24bit", 44100, 1, 24},
    {0x100011, "44.1KHz, Stereo, 24bit", 44100, 2, 24},
    {0x100020, "48KHz, Mono, 24bit", 48000, 1, 24},
    {0x100021, "48KHz, Stereo, 24bit", 48000, 2, 24},
    {0x100040, "96KHz, Mono, 24bit", 96000, 1, 24},
    {0x100041, "96KHz, Stereo, 24bit", 96000, 2, 24},
    {0x100080, "192KHz, Mono, 24bit", 192000, 1, 24},
    {0x100081, "192KHz, Stereo, 24bit", 192000, 2, 24},
};

// Rate, channels and bits of a format code, as a switch over the codes (not a second look
// into the table) so that a code matching no case leaves the record empty.
void fillFromCode(uint32_t code, WaveFormat& record)
{
    uint32_t rate = 0;
    uint16_t channels = 0;
    uint16_t bits = 0;
    switch (code) {
    case 0x1:
        rate = 11025;
        channels = 1;
        bits = 8;
        break;
    case 0x2:
        rate = 11025;
        channels = 2;
        bits = 8;
        break;
    case 0x10:
        rate = 22050;
        channels = 1;
        bits = 8;
        break;
    case 0x20:
        rate = 22050;
        channels = 2;
        bits = 8;
        break;
    case 0x100:
        rate = 44100;
        channels = 1;
        bits = 8;
        break;
    case 0x200:
        rate = 44100;
        channels = 2;
        bits = 8;
        break;
    case 0x1000:
        rate = 48000;
        channels = 1;
        bits = 8;
        break;
    case 0x2000:
        rate = 48000;
        channels = 2;
        bits = 8;
        break;
    case 0x10000:
        rate = 96000;
        channels = 1;
        bits = 8;
        break;
    case 0x20000:
        rate = 96000;
        channels = 2;
        bits = 8;
        break;
    case 0x4:
        rate = 11025;
        channels = 1;
        bits = 16;
        break;
    case 0x8:
        rate = 11025;
        channels = 2;
        bits = 16;
        break;
    case 0x40:
        rate = 22050;
        channels = 1;
        bits = 16;
        break;
    case 0x80:
        rate = 22050;
        channels = 2;
        bits = 16;
        break;
    case 0x400:
        rate = 44100;
        channels = 1;
        bits = 16;
        break;
    case 0x800:
        rate = 44100;
        channels = 2;
        bits = 16;
        break;
    case 0x4000:
        rate = 48000;
        channels = 1;
        bits = 16;
        break;
    case 0x8000:
        rate = 48000;
        channels = 2;
        bits = 16;
        break;
    case 0x40000:
        rate = 96000;
        channels = 1;
        bits = 16;
        break;
    case 0x80000:
        rate = 96000;
        channels = 2;
        bits = 16;
        break;
    case 0x100010:
        rate = 44100;
        channels = 1;
        bits = 24;
        break;
    case 0x100011:
        rate = 44100;
        channels = 2;
        bits = 24;
        break;
    case 0x100020:
        rate = 48000;
        channels = 1;
        bits = 24;
        break;
    case 0x100021:
        rate = 48000;
        channels = 2;
        bits = 24;
        break;
    case 0x100040:
        rate = 96000;
        channels = 1;
        bits = 24;
        break;
    case 0x100041:
        rate = 96000;
        channels = 2;
        bits = 24;
        break;
    case 0x100080:
        rate = 192000;
        channels = 1;
        bits = 24;
        break;
    case 0x100081:
        rate = 192000;
        channels = 2;
        bits = 24;
        break;
    default:
        break;
    }
    record.wFormatTag = 1;
    record.nChannels = channels;
    record.nSamplesPerSec = rate;
    record.wBitsPerSample = bits;
    record.nBlockAlign = static_cast<uint16_t>(bits * channels / 8);
    record.nAvgBytesPerSec = record.nBlockAlign * rate;
    record.cbSize = 0;
}

} // namespace

const RecordFormatRow* recordFormatTable()
{
    return kRows;
}

const RecordFormatRow* findRecordFormat(const char* name)
{
    if (name == nullptr)
        return nullptr;
    for (const RecordFormatRow& row : kRows)
        if (std::strcmp(row.name, name) == 0)
            return &row;
    return nullptr;
}

int formatFromName(const char* name, WaveFormat& record)
{
    const RecordFormatRow* row = findRecordFormat(name);
    fillFromCode(row != nullptr ? row->code : 0, record);
    return row != nullptr ? 1 : 0;
}

} // namespace tg
