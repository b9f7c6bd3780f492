// The waveform-only library file, laid out as export/montage/README.md describes it: header,
// block catalogue, an empty library reference, then the entry and data blocks.
#include "export/montage/YsfcLibrary.h"

#include <array>

namespace tg {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kHeaderSize = 64;
constexpr size_t kLibraryBlockSize = 81; // references to other libraries: none
constexpr uint32_t kFirstEntryId = 10001;
constexpr uint32_t kFirstContentNumber = 0x10001;
constexpr const char* kNoCategory = "256:"; // waveform names carry "<category>:" in front
constexpr uint8_t kLoopForward = 0;
constexpr uint8_t kLoopOneShot = 1;

// The blocks in catalogue and file order; the ones after the waveform data stay empty.
constexpr std::array<const char*, 14> kBlockOrder = {"EWFM", "EWIM", "DWFM", "DWIM", "EARP",
                                                     "DARP", "ESOM", "ESPG", "DSOM", "DSPG",
                                                     "ECRV", "DCRV", "ELST", "DLST"};

void appendBE32(Bytes& out, uint64_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(uint8_t(value >> shift));
}

void appendLE32(Bytes& out, uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(uint8_t(value >> shift));
}

void appendText(Bytes& out, const std::string& text, size_t width)
{
    for (size_t i = 0; i < width; ++i)
        out.push_back(i < text.size() ? uint8_t(text[i]) : 0);
}

void appendFill(Bytes& out, size_t count, uint8_t value)
{
    out.insert(out.end(), count, value);
}

void appendKeyBank(Bytes& out, const YsfcKeyBank& bank)
{
    // 64 bytes; the 32-bit fields are little-endian here, unlike the blocks'
    out.insert(out.end(), {bank.lowKey, bank.highKey, bank.lowVelocity, bank.highVelocity});
    out.push_back(255); // level: 0 dB (the audio already carries the export's gain)
    out.push_back(64);  // pan: centre
    out.push_back(0);
    out.push_back(0xFF); // pitch follows the key
    out.push_back(bank.rootKey);
    out.push_back(64); // coarse tune: 0
    out.push_back(64); // fine tune: 0
    out.push_back(bank.channels);
    out.push_back(0); // loop tune: 0
    out.push_back(2); // play form
    out.push_back(5); // 16-bit linear
    out.push_back(bank.looped ? kLoopForward : kLoopOneShot);
    out.push_back(0); // not encrypted
    out.push_back(0); // pitch up limit
    // The loop start is kept as whole 16-frame steps (below) and the frames left over (here).
    const uint32_t loopStart = bank.looped ? bank.loopStart : 0;
    out.push_back(uint8_t(loopStart % 16));
    out.push_back(1);
    appendFill(out, 12, 0);
    out.insert(out.end(), {0, 0, 0, 0xFF});
    appendLE32(out, bank.rate);
    appendLE32(out, 0); // play start
    appendLE32(out, loopStart / 16);
    appendLE32(out, bank.looped ? bank.loopEnd : bank.frames);
    appendLE32(out, 0);
    appendLE32(out, bank.sampleNumber);
    appendLE32(out, bank.frames);
}

// The key-bank list of one waveform: a 16-bit little-endian count, two zero bytes, the banks.
Bytes keyBankList(const YsfcWaveform& waveform)
{
    Bytes out;
    const size_t count = waveform.keyBanks.size();
    out.push_back(uint8_t(count));
    out.push_back(uint8_t(count >> 8));
    appendFill(out, 2, 0);
    for (const YsfcKeyBank& bank : waveform.keyBanks)
        appendKeyBank(out, bank);
    return out;
}

uint64_t audioItemSize(const YsfcWaveform& waveform)
{
    uint64_t size = 4; // the count of audio parts
    for (const YsfcKeyBank& bank : waveform.keyBanks)
        size += 4 + uint64_t(bank.frames) * 2;
    return size;
}

// One entry of an entry block: where the waveform's item lies in the matching data block.
Bytes entry(const std::string& name, uint64_t itemSize, uint64_t itemOffset, uint32_t content,
            uint32_t entryId)
{
    Bytes body;
    appendBE32(body, itemSize);
    appendBE32(body, itemOffset);
    appendBE32(body, content);
    appendFill(body, 6, 0); // flags
    appendBE32(body, entryId);
    const std::string itemName = kNoCategory + name;
    body.insert(body.end(), itemName.begin(), itemName.end());
    body.push_back(0);
    body.push_back(0); // no title
    Bytes out = {'E', 'n', 't', 'r'};
    appendBE32(out, body.size());
    out.insert(out.end(), body.begin(), body.end());
    return out;
}

void appendBlockHeader(Bytes& out, const char* id, uint64_t itemsSize, size_t items)
{
    appendText(out, id, 4);
    appendBE32(out, 4 + itemsSize); // the count field and the items
    appendBE32(out, items);
}

struct Layout {
    Bytes waveformEntries;       // EWFM items
    Bytes audioEntries;          // EWIM items
    Bytes keyBankItems;          // DWFM items
    uint64_t audioItemsSize = 0; // DWIM items, written from the audio
    std::array<uint64_t, kBlockOrder.size()> blockSizes{};
};

Layout layOut(const std::vector<YsfcWaveform>& waveforms)
{
    Layout layout;
    uint64_t keyBankOffset = 12; // items start after the block's id, length and count
    uint64_t audioOffset = 12;
    uint32_t entryId = kFirstEntryId;
    for (size_t i = 0; i < waveforms.size(); ++i) {
        const Bytes banks = keyBankList(waveforms[i]);
        const uint64_t audioSize = audioItemSize(waveforms[i]);
        const uint32_t content = kFirstContentNumber + uint32_t(i);
        const Bytes bankEntry =
            entry(waveforms[i].name, banks.size(), keyBankOffset, content, entryId++);
        const Bytes audioEntry =
            entry(waveforms[i].name, audioSize, audioOffset, content, entryId++);
        layout.waveformEntries.insert(layout.waveformEntries.end(), bankEntry.begin(),
                                      bankEntry.end());
        layout.audioEntries.insert(layout.audioEntries.end(), audioEntry.begin(), audioEntry.end());
        appendText(layout.keyBankItems, "Data", 4);
        appendBE32(layout.keyBankItems, banks.size());
        layout.keyBankItems.insert(layout.keyBankItems.end(), banks.begin(), banks.end());
        keyBankOffset += 8 + banks.size();
        audioOffset += 8 + audioSize;
        layout.audioItemsSize += 8 + audioSize;
    }
    layout.blockSizes[0] = layout.waveformEntries.size();
    layout.blockSizes[1] = layout.audioEntries.size();
    layout.blockSizes[2] = layout.keyBankItems.size();
    layout.blockSizes[3] = layout.audioItemsSize;
    return layout;
}

Bytes head(const std::vector<YsfcWaveform>& waveforms, const Layout& layout)
{
    Bytes out;
    appendText(out, "YAMAHA-YSFC", 16);
    appendText(out, "4.0.5", 16);
    appendBE32(out, kBlockOrder.size() * 8);
    appendFill(out, 12, 0xFF);
    appendBE32(out, kLibraryBlockSize);
    appendFill(out, 8, 0xFF);
    appendBE32(out, kFirstEntryId + 2 * waveforms.size()); // the next free entry id

    uint64_t offset = kHeaderSize + kBlockOrder.size() * 8 + kLibraryBlockSize;
    for (size_t i = 0; i < kBlockOrder.size(); ++i) {
        appendText(out, kBlockOrder[i], 4);
        appendBE32(out, offset);
        offset += 12 + layout.blockSizes[i];
    }
    appendFill(out, kLibraryBlockSize - 1, 0xFF);
    out.push_back(0);

    const size_t count = waveforms.size();
    appendBlockHeader(out, kBlockOrder[0], layout.waveformEntries.size(), count);
    out.insert(out.end(), layout.waveformEntries.begin(), layout.waveformEntries.end());
    appendBlockHeader(out, kBlockOrder[1], layout.audioEntries.size(), count);
    out.insert(out.end(), layout.audioEntries.begin(), layout.audioEntries.end());
    appendBlockHeader(out, kBlockOrder[2], layout.keyBankItems.size(), count);
    out.insert(out.end(), layout.keyBankItems.begin(), layout.keyBankItems.end());
    appendBlockHeader(out, kBlockOrder[3], layout.audioItemsSize, count);
    return out;
}

} // namespace

uint64_t ysfcFileSize(const std::vector<YsfcWaveform>& waveforms)
{
    const Layout layout = layOut(waveforms);
    uint64_t size = kHeaderSize + kBlockOrder.size() * 8 + kLibraryBlockSize;
    for (uint64_t blockSize : layout.blockSizes)
        size += 12 + blockSize;
    return size;
}

bool writeYsfcLibrary(const std::vector<YsfcWaveform>& waveforms, const YsfcAudio& audio,
                      const YsfcOutput& out)
{
    const Layout layout = layOut(waveforms);
    const Bytes start = head(waveforms, layout);
    if (!out(start.data(), start.size()))
        return false;
    for (size_t w = 0; w < waveforms.size(); ++w) {
        const std::vector<YsfcKeyBank>& banks = waveforms[w].keyBanks;
        Bytes itemHead = {'D', 'a', 't', 'a'};
        appendBE32(itemHead, audioItemSize(waveforms[w]));
        appendBE32(itemHead, banks.size()); // this count is big-endian, unlike the key banks'
        if (!out(itemHead.data(), itemHead.size()))
            return false;
        for (size_t b = 0; b < banks.size(); ++b) {
            Bytes partSize;
            appendBE32(partSize, uint64_t(banks[b].frames) * 2);
            if (!out(partSize.data(), partSize.size()) || !audio(w, b, out))
                return false;
        }
    }
    Bytes tail;
    for (size_t i = 4; i < kBlockOrder.size(); ++i)
        appendBlockHeader(tail, kBlockOrder[i], 0, 0);
    return out(tail.data(), tail.size());
}

} // namespace tg
