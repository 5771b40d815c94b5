// Feeds arbitrary texts to the parameter text readers of every row, in every setting of
// the switches that change how a row reads: notes, note lengths, numbers with units and
// "-inf". Whatever the text, a value that reads must lie in 0..1, and its text must read
// again.
#include "patch/NoteText.h"
#include "product/TidewakeDescriptor.h"
#include "product/TidewakeFactory.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tw;
    static const TidewakeFactory factory;
    static const std::unique_ptr<Patch> patch = factory.createInitPatch();
    const std::string text(reinterpret_cast<const char*>(data), size);

    NoteText note;
    scanNoteText(text.c_str(), note);
    // Ranges Fine to Midi, both sync switches, and the four LFO targets.
    for (int setting = 0; setting < 4; ++setting) {
        patch->storeParameter(Param::freqShiftRange, setting / 3.0f);
        patch->storeParameter(Param::lfoTarget, setting / 3.0f);
        patch->storeParameter(Param::delaySync, setting & 1);
        patch->storeParameter(Param::lfoSync, setting >> 1);
        for (int id = 0; id < Param::count; ++id) {
            float value = -1;
            if (!factory.textToValue(*patch, id, text, value)) continue;
            if (!(value >= 0 && value <= 1)) std::abort();
            float again = -1;
            if (!factory.textToValue(*patch, id, factory.valueToText(*patch, id, value, true), again)) std::abort();
        }
    }
    return 0;
}
