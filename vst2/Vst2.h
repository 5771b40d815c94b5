// Our own declaration of the VST 2.4 binary interface, as far as Tidewake and its
// command-line host use it: the effect record, the opcodes both ways, time info and
// events. Written from the published layout of the interface; no third-party header.
#pragma once

#include <cstdint>

namespace vst2 {

using int16 = std::int16_t;
using int32 = std::int32_t;
using intptr = std::intptr_t;

struct AEffect;

using HostCallback = intptr (*)(AEffect* effect, int32 opcode, int32 index, intptr value, void* ptr, float opt);
using DispatcherProc = intptr (*)(AEffect* effect, int32 opcode, int32 index, intptr value, void* ptr, float opt);
using ProcessProc = void (*)(AEffect* effect, float** inputs, float** outputs, int32 sampleFrames);
using ProcessDoubleProc = void (*)(AEffect* effect, double** inputs, double** outputs, int32 sampleFrames);
using SetParameterProc = void (*)(AEffect* effect, int32 index, float value);
using GetParameterProc = float (*)(AEffect* effect, int32 index);

// A four-character code as the interface counts it: the first character in the high byte.
constexpr int32 fourCC(const char (&c)[5]) {
    return static_cast<int32>((static_cast<std::uint32_t>(static_cast<unsigned char>(c[0])) << 24) |
                              (static_cast<std::uint32_t>(static_cast<unsigned char>(c[1])) << 16) |
                              (static_cast<std::uint32_t>(static_cast<unsigned char>(c[2])) << 8) |
                              static_cast<std::uint32_t>(static_cast<unsigned char>(c[3])));
}

constexpr int32 kEffectMagic = fourCC("VstP");

struct AEffect {
    int32 magic;
    DispatcherProc dispatcher;
    ProcessProc process;  // the older accumulating call
    SetParameterProc setParameter;
    GetParameterProc getParameter;
    int32 numPrograms;
    int32 numParams;
    int32 numInputs;
    int32 numOutputs;
    int32 flags;
    intptr resvd1;
    intptr resvd2;
    int32 initialDelay;
    int32 realQualities;
    int32 offQualities;
    float ioRatio;
    void* object;
    void* user;
    int32 uniqueID;
    int32 version;
    ProcessProc processReplacing;
    ProcessDoubleProc processDoubleReplacing;
    char future[56];
};

enum EffectFlags : int32 {
    effFlagsHasEditor = 1 << 0,
    effFlagsHasClip = 1 << 1,
    effFlagsHasVu = 1 << 2,
    effFlagsCanMono = 1 << 3,
    effFlagsCanReplacing = 1 << 4,
    effFlagsProgramChunks = 1 << 5,
    effFlagsIsSynth = 1 << 8,
    effFlagsNoSoundInStop = 1 << 9,
    effFlagsCanDoubleReplacing = 1 << 12,
};

// Opcodes the host sends to the plug-in's dispatcher.
enum EffectOpcode : int32 {
    effOpen = 0,
    effClose = 1,
    effSetProgram = 2,
    effGetProgram = 3,
    effSetProgramName = 4,
    effGetProgramName = 5,
    effGetParamLabel = 6,
    effGetParamDisplay = 7,
    effGetParamName = 8,
    effSetSampleRate = 10,
    effSetBlockSize = 11,
    effMainsChanged = 12,
    effEditGetRect = 13,
    effEditOpen = 14,
    effEditClose = 15,
    effEditIdle = 19,
    effGetChunk = 23,
    effSetChunk = 24,
    effProcessEvents = 25,
    effCanBeAutomated = 26,
    effString2Parameter = 27,
    effGetProgramNameIndexed = 29,
    effGetPlugCategory = 35,
    effSetBypass = 44,
    effGetEffectName = 45,
    effGetVendorString = 47,
    effGetProductString = 48,
    effGetVendorVersion = 49,
    effVendorSpecific = 50,
    effCanDo = 51,
    effGetTailSize = 52,
    effGetVstVersion = 58,
    effEditKeyDown = 59,  // index: the character, value: a virtual key, opt: modifier bits
    effEditKeyUp = 60,
    effStartProcess = 71,
    effStopProcess = 72,
};

// Opcodes the plug-in sends to the host callback.
enum HostOpcode : int32 {
    audioMasterAutomate = 0,
    audioMasterVersion = 1,
    audioMasterWantMidi = 6,
    audioMasterGetTime = 7,
    audioMasterIOChanged = 13,
    audioMasterSizeWindow = 15,
    audioMasterGetSampleRate = 16,
    audioMasterGetBlockSize = 17,
    audioMasterUpdateDisplay = 42,
    audioMasterBeginEdit = 43,
    audioMasterEndEdit = 44,
};

enum PlugCategory : int32 { kPlugCategEffect = 1, kPlugCategSynth = 2 };

struct ERect {
    int16 top, left, bottom, right;
};

struct VstTimeInfo {
    double samplePos;
    double sampleRate;
    double nanoSeconds;
    double ppqPos;
    double tempo;
    double barStartPos;
    double cycleStartPos;
    double cycleEndPos;
    int32 timeSigNumerator;
    int32 timeSigDenominator;
    int32 smpteOffset;
    int32 smpteFrameRate;
    int32 samplesToNextClock;
    int32 flags;
};

enum TimeInfoFlags : int32 {
    kVstTransportChanged = 1,
    kVstTransportPlaying = 1 << 1,
    kVstTransportCycleActive = 1 << 2,
    kVstTransportRecording = 1 << 3,
    kVstNanosValid = 1 << 8,
    kVstPpqPosValid = 1 << 9,
    kVstTempoValid = 1 << 10,
    kVstBarsValid = 1 << 11,
    kVstCyclePosValid = 1 << 12,
    kVstTimeSigValid = 1 << 13,
    kVstSmpteValid = 1 << 14,
    kVstClockValid = 1 << 15,
};

enum EventType : int32 { kVstMidiType = 1, kVstSysExType = 6 };

struct VstEvent {
    int32 type;
    int32 byteSize;
    int32 deltaFrames;
    int32 flags;
    char data[16];
};

struct VstMidiEvent {
    int32 type;
    int32 byteSize;
    int32 deltaFrames;
    int32 flags;
    int32 noteLength;
    int32 noteOffset;
    char midiData[4];
    char detune;
    char noteOffVelocity;
    char reserved1;
    char reserved2;
};

// Declared with two entries; hosts allocate it longer.
struct VstEvents {
    int32 numEvents;
    intptr reserved;
    VstEvent* events[2];
};

static_assert(sizeof(AEffect) == 192, "AEffect must match the interface on x86-64");
static_assert(sizeof(VstTimeInfo) == 88, "VstTimeInfo must match the interface on x86-64");
static_assert(sizeof(VstMidiEvent) == 32, "VstMidiEvent must match the interface");
static_assert(sizeof(VstEvent) == sizeof(VstMidiEvent), "events share one size");

}  // namespace vst2
