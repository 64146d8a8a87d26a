// General MIDI program and category names, answered although the effect takes no MIDI: some
// hosts ask every plug-in.
#include <iterator>

#include "effect/VstXSynth.h"
#include "common/boundedCopy.h"

namespace {

constexpr const char* kGmProgramNames[] = {
    // Piano
    "Acoustic Grand Piano", "Bright Acoustic Piano", "Electric Grand Piano", "Honky-tonk Piano",
    "Electric Piano 1", "Electric Piano 2", "Harpsichord", "Clavi",
    // Chromatic Percussion
    "Celesta", "Glockenspiel", "Music Box", "Vibraphone", "Marimba", "Xylophone",
    "Tubular Bells", "Dulcimer",
    // Organ
    "Drawbar Organ", "Percussive Organ", "Rock Organ", "Church Organ", "Reed Organ",
    "Accordion", "Harmonica", "Tango Accordion",
    // Guitar
    "Acoustic Guitar (nylon)", "Acoustic Guitar (steel)", "Electric Guitar (jazz)",
    "Electric Guitar (clean)", "Electric Guitar (muted)", "Overdriven Guitar",
    "Distortion Guitar", "Guitar harmonics",
    // Bass
    "Acoustic Bass", "Electric Bass (finger)", "Electric Bass (pick)", "Fretless Bass",
    "Slap Bass 1", "Slap Bass 2", "Synth Bass 1", "Synth Bass 2",
    // Strings
    "Violin", "Viola", "Cello", "Contrabass", "Tremolo Strings", "Pizzicato Strings",
    "Orchestral Harp", "Timpani",
    // Ensemble
    "String Ensemble 1", "String Ensemble 2", "SynthStrings 1", "SynthStrings 2", "Choir Aahs",
    "Voice Oohs", "Synth Voice", "Orchestra Hit",
    // Brass
    "Trumpet", "Trombone", "Tuba", "Muted Trumpet", "French Horn", "Brass Section",
    "SynthBrass 1", "SynthBrass 2",
    // Reed
    "Soprano Sax", "Alto Sax", "Tenor Sax", "Baritone Sax", "Oboe", "English Horn", "Bassoon",
    "Clarinet",
    // Pipe
    "Piccolo", "Flute", "Recorder", "Pan Flute", "Blown Bottle", "Shakuhachi", "Whistle",
    "Ocarina",
    // Synth Lead
    "Lead 1 (square)", "Lead 2 (sawtooth)", "Lead 3 (calliope)", "Lead 4 (chiff)",
    "Lead 5 (charang)", "Lead 6 (voice)", "Lead 7 (fifths)", "Lead 8 (bass + lead)",
    // Synth Pad
    "Pad 1 (new age)", "Pad 2 (warm)", "Pad 3 (polysynth)", "Pad 4 (choir)", "Pad 5 (bowed)",
    "Pad 6 (metallic)", "Pad 7 (halo)", "Pad 8 (sweep)",
    // Synth Effects
    "FX 1 (rain)", "FX 2 (soundtrack)", "FX 3 (crystal)", "FX 4 (atmosphere)",
    "FX 5 (brightness)", "FX 6 (goblins)", "FX 7 (echoes)", "FX 8 (sci-fi)",
    // Ethnic
    "Sitar", "Banjo", "Shamisen", "Koto", "Kalimba", "Bag pipe", "Fiddle", "Shanai",
    // Percussive
    "Tinkle Bell", "Agogo", "Steel Drums", "Woodblock", "Taiko Drum", "Melodic Tom",
    "Synth Drum", "Reverse Cymbal",
    // Sound Effects
    "Guitar Fret Noise", "Breath Noise", "Seashore", "Bird Tweet", "Telephone Ring",
    "Helicopter", "Applause", "Gunshot",
};
static_assert(std::size(kGmProgramNames) == 128);

constexpr int kNumCategories = 17;
constexpr const char* kGmCategoryNames[kNumCategories] = {
    "Piano",      "Percussion", "Organ",         "Guitar", "Bass",       "Strings",
    "Ensemble",   "Brass",      "Reed",          "Pipe",   "Synth Lead", "SynthPad",
    "Synth Effects", "Ethnic",  "Percussive",    "Effects", "DrumSets"};

// First program of each category, then an end mark. Category 0 ends at 6 (not 7), and the final 0
// means no program ever falls into category 16.
constexpr int16_t kGmCategoryFirstProgram[kNumCategories + 1] = {
    0, 7, 16, 24, 32, 40, 48, 56, 64, 72, 80, 88, 96, 104, 112, 120, 128, 0};

constexpr VstInt32 kDrumChannel = 9;
constexpr size_t kMidiNameMax = kVstMaxNameLen - 1;

} // namespace

void VstXSynth::fillMidiProgram(VstInt32 channel, VstInt32 program, MidiProgramName* record)
{
    record->midiBankMsb = -1;
    record->midiBankLsb = -1;
    record->reserved = 0;
    record->flags = 0;
    if (channel == kDrumChannel) {
        copyBounded(record->name, "Standard", kMidiNameMax);
        record->midiProgram = 0;
        record->parentCategoryIndex = 0;
        return;
    }
    copyBounded(record->name, kGmProgramNames[program], kMidiNameMax);
    record->midiProgram = static_cast<char>(program);
    record->parentCategoryIndex = -1;
    for (int i = 0; i < kNumCategories; ++i) {
        if (kGmCategoryFirstProgram[i] <= program && program < kGmCategoryFirstProgram[i + 1]) {
            record->parentCategoryIndex = i;
            break;
        }
    }
}

VstInt32 VstXSynth::getMidiProgramName(VstInt32 channel, MidiProgramName* record)
{
    if (!record)
        return 0;
    const VstInt32 program = record->thisProgramIndex;
    if (static_cast<uint32_t>(program) > 127)
        return 0;
    fillMidiProgram(channel, program, record);
    return channel == kDrumChannel ? 1 : 128;
}

VstInt32 VstXSynth::getCurrentMidiProgram(VstInt32 channel, MidiProgramName* record)
{
    if (static_cast<uint32_t>(channel) > 15 || !record)
        return -1;
    const VstInt32 program = currentMidiPrograms[channel];
    record->thisProgramIndex = program;
    fillMidiProgram(channel, program, record);
    return program;
}

VstInt32 VstXSynth::getMidiProgramCategory(VstInt32 channel, MidiProgramCategory* record)
{
    if (!record)
        return 0;
    record->parentCategoryIndex = -1;
    record->flags = 0;
    if (channel == kDrumChannel) {
        copyBounded(record->name, "Drums", kMidiNameMax);
        return 1;
    }
    const VstInt32 category = record->thisCategoryIndex;
    if (static_cast<uint32_t>(category) < kNumCategories)
        copyBounded(record->name, kGmCategoryNames[category], kMidiNameMax);
    else
        record->name[0] = 0;
    return kNumCategories;
}

bool VstXSynth::getMidiKeyName(VstInt32, MidiKeyName* record)
{
    if (record) {
        record->keyName[0] = 0;
        record->reserved = 0;
        record->flags = 0;
    }
    return false;
}
