// The CLAP build sounds as the VST build: every factory program rendered through the
// command-line CLAP host (its state made of the VST build's chunk and that program)
// gives the samples vst2host renders through Tidewake.so, and so do a held note (as a CLAP
// note event and as MIDI), another tempo and a stopped transport. The two tools run as a
// user runs them; the chunk in the state is the VST build's, byte for byte.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "tools/common/AudioFile.h"

namespace tw {
namespace {

const std::string bin = TIDEWAKE_BINARY_DIR;

// Runs a command line quietly; its exit status.
int run(const std::string& command) { return std::system((command + " >/dev/null").c_str()); }

std::string scratch(const std::string& name) {
    return bin + "/tests/clap/render-match-" + name;
}

std::vector<char> bytesOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<char>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The WAV files' sample data, compared sample by sample (their headers carry the time
// they were written).
void expectSameSamples(const std::string& vst, const std::string& clap) {
    const AudioBuffer a = readAudioFile(vst), b = readAudioFile(clap);
    ASSERT_EQ(a.sampleRate, b.sampleRate);
    ASSERT_EQ(a.channels, b.channels);
    ASSERT_EQ(a.samples.size(), b.samples.size());
    ASSERT_GT(a.samples.size(), 48000u);
    std::size_t differing = 0, first = 0;
    bool heard = false;
    for (std::size_t i = 0; i < a.samples.size(); ++i) {
        if (a.samples[i] != b.samples[i] && differing++ == 0) first = i;
        heard = heard || a.samples[i] != 0.0f;
    }
    EXPECT_TRUE(heard) << vst << " is silent";
    EXPECT_EQ(differing, 0u) << "first at sample " << first << " of " << a.samples.size();
}

struct Tools {
    std::string vst2host = bin + "/vst2host", vst = bin + "/Tidewake.so";
    std::string claphost = bin + "/claphost", clap = bin + "/Tidewake.clap";
};

// The state of a CLAP session on `program`: the VST build's bank chunk and the program.
std::vector<char> clapState(const std::vector<char>& chunk, int program) {
    std::vector<char> state = chunk;
    for (char c : std::string("Prog")) state.push_back(c);
    for (int shift = 0; shift < 32; shift += 8) state.push_back(static_cast<char>((program >> shift) & 0xff));
    return state;
}

void writeBytes(const std::string& path, const std::vector<char>& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

TEST(ClapRenderMatch, EveryFactoryProgramSoundsAsTheVstBuild) {
    const Tools t;
    for (int program = 0; program < 16; ++program) {
        SCOPED_TRACE("program " + std::to_string(program));
        const std::string chunk = scratch("program.chunk"), state = scratch("program.state"), saved = scratch("saved.state");
        const std::string vstOut = scratch("vst.wav"), clapOut = scratch("clap.wav");
        ASSERT_EQ(run(t.vst2host + " save " + t.vst + " " + chunk + " --program " + std::to_string(program)), 0);
        writeBytes(state, clapState(bytesOf(chunk), program));
        // The CLAP build keeps the VST build's chunk byte for byte, and the program with it;
        // the VST build reads that state as its chunk.
        ASSERT_EQ(run(t.claphost + " save " + t.clap + " " + saved + " --state " + state), 0);
        EXPECT_EQ(bytesOf(saved), bytesOf(state));
        EXPECT_EQ(run(t.vst2host + " load " + t.vst + " " + saved), 0);
        ASSERT_EQ(run(t.vst2host + " render " + t.vst + " --program " + std::to_string(program) + " -o " + vstOut), 0);
        ASSERT_EQ(run(t.claphost + " render " + t.clap + " --state " + state + " -o " + clapOut), 0);
        expectSameSamples(vstOut, clapOut);
    }
}

TEST(ClapRenderMatch, NotesTempoAndTransportAsTheVstBuild) {
    const Tools t;
    const std::string chunk = scratch("midi.chunk"), vstOut = scratch("vst-note.wav"), clapOut = scratch("clap-note.wav");
    // The shift's range follows the held note only in the Midi range.
    const std::string midi = " --set freqShiftRange=Midi --set lfoSync=On --set delaySync=On";
    ASSERT_EQ(run(t.vst2host + " save " + t.vst + " " + chunk + " --program 3" + midi), 0);
    const struct {
        std::string name, vstOptions, clapOptions;
    } cases[] = {
        {"a CLAP note", " --note 57", " --note 57"},
        {"a MIDI note", " --note 64", " --note 64 --midi-note"},
        {"another tempo", " --tempo 97.5", " --tempo 97.5"},
        {"a stopped transport", " --stopped", " --stopped"},
        {"no transport", " --no-time", " --no-time"},
        {"small blocks", " --block 37", " --block 37"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(run(t.vst2host + " render " + t.vst + " --chunk " + chunk + c.vstOptions + " -o " + vstOut), 0);
        ASSERT_EQ(run(t.claphost + " render " + t.clap + " --state " + chunk + c.clapOptions + " -o " + clapOut), 0);
        expectSameSamples(vstOut, clapOut);
    }
}

}  // namespace
}  // namespace tw
