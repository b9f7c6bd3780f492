// A sound file as libsndfile, the independent reader, sees it: its format and its instrument
// chunk (base note, key range, loops).
#pragma once

#include <sndfile.h>

#include <memory>
#include <string>

namespace tg::test {

struct SndfileView {
    std::unique_ptr<SNDFILE, int (*)(SNDFILE*)> file{nullptr, sf_close}; // null: refused
    SF_INFO info{};
    bool hasInstrument = false;
    SF_INSTRUMENT instrument{};
};

inline SndfileView viewWithSndfile(const std::string& path)
{
    SndfileView view;
    view.file.reset(sf_open(path.c_str(), SFM_READ, &view.info));
    if (view.file)
        view.hasInstrument = sf_command(view.file.get(), SFC_GET_INSTRUMENT, &view.instrument,
                                        sizeof view.instrument) == SF_TRUE;
    return view;
}

} // namespace tg::test
