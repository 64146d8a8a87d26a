#include "tools/render/CommandLine.h"

std::string usageText()
{
    return "Usage: hvtremolo-render [OPTIONS] INPUT OUTPUT\n"
           "       hvtremolo-render [OPTIONS] --demo OUTPUT\n"
           "       hvtremolo-render --list [--plugin PATH.so] [--program P] [--param K=V]...\n"
           "                               [--sample-rate HZ]\n"
           "       hvtremolo-render --help | --version\n"
           R"HELP(
Renders a sound file through the HvTremolo plug-in, loaded the way any VST 2.4 host loads it,
and writes the result in stereo at the input's sample rate, in the format OUTPUT's name asks
for. INPUT or OUTPUT `-` is standard input or output.

Files:
  INPUT               any mono or stereo file libsndfile reads (WAV, FLAC, AIFF, OGG, MP3,
                      W64, RF64, CAF, AU...); a mono file feeds both inputs of the plug-in.
                      `-` reads standard input (read whole first, so FLAC and OGG work too).
  OUTPUT              the format comes from the extension: .wav, .flac, .ogg, .aiff/.aif, .au,
                      .w64, .rf64, .caf, .mp3 (those this libsndfile writes); a name without
                      an extension (such as a device) gets WAV, an unknown extension is an
                      error. `-` writes standard output (WAV unless --type says otherwise).
                      A WAV output that would pass 4 GiB is written as RF64; AIFF cannot pass
                      4 GiB and is refused.
  --demo              render the built-in demo instead of INPUT: 6 seconds of two sustained
                      electric-piano chords, the same on both channels (float output)
  --plot FILE.png     also draw a 1000 x 400 PNG of the envelopes (RMS over 30 ms, in dB)
                      of the input and of the left and right output over time (one line
                      "output (L = R)" when they are equal), titled with the program and every
                      parameter that differs from it; FILE must end in .png and differ from
                      OUTPUT

Format:
  --type EXT, -t EXT  write this format whatever OUTPUT's name says, e.g. --type flac for `-`
  --bits B            sample format: 16, 24, 32 or float. Default: the input's (16-bit in gives
                      16-bit out, 24 gives 24, 32 gives 32, float gives float; 8-bit and
                      codecs such as A-law give 16; a lossy input such as OGG or MP3 gives
                      float); the demo gives float. Where the format cannot hold it, the
                      nearest it can: FLAC holds 16 and 24, so float and 32 become 24. OGG and
                      MP3 are lossy and take no bits. Integer outputs clip, never wrap.
  Text tags of the input (title, artist, comment, date, album, genre...) are kept where the
  output format holds them (WAV, RF64, AIFF, CAF, FLAC, OGG, MP3; not AU or W64).

Effect:
  --plugin PATH.so    the module to load (default: HvTremolo.so next to this program)
  --program P         program P before any parameter: a number (0 to 9, see --list) or a
                      name, without regard to case (waves, "the gentleman", the-gentleman).
                      Without it the plug-in keeps its own default, program 0 "Wurli Classic":
                      tremolo only, no panning, which is what a host gives you on first load;
                      try --program waves to hear the panner swing the sound.
  --param K=V         set parameter K, an index or a name, to V, a number passed to the
                      plug-in exactly as written; repeatable, applied in the order given, after
                      --program (a program change would overwrite them). Names are the display
                      names in lower case with spaces as `-`, without regard to case:
                        0 tremolo-depth, 1 tremolo-speed, 2 stereo-panner, 3 panner-speed,
                        4 mix: 0 to 1
                        5 sample-rate: 7, 8, 9 or 10, the rate the speeds are tuned for
                          (44.1, 48, 88.2 or 96 kHz)
                      Values outside these ranges are refused.
  --keep-rate         do not tune the speeds to the input's rate (see below)
  --block N           frames per processing call, 1 to 65536 (default 512); the last call of
                      a file gets what is left
  --sample-rate HZ    sample rate of the demo (default 44100); an input file keeps its own

Output on the terminal:
  --quiet, -q         print nothing but errors (no progress bar, summary or warnings)
  --list              print the programs and the parameters (index, name for --param, display
                      text after --program and --param), then stop
  --help, -h          print this text
  --version           print the program's name and version

Tuning: the plug-in's speeds count in samples, so they sound as the programs intend only at the
rate they are tuned for. Unless --param sample-rate (5) or --keep-rate is given, a 44.1, 48,
88.2 or 96 kHz input selects rate choice 7, 8, 9 or 10; at any other rate the choice stays 7
and a warning says how much faster or slower the speeds run. The summary says which tuning the
plug-in ended with.

Files are never lost: OUTPUT naming the same file as INPUT (also through links) is refused, and
a file is written under a temporary name beside it and renamed over it only when complete, so a
failure or Ctrl-C leaves the old file as it was and nothing behind. A symlink stays a link and
its target is written. What is not a regular file (standard output, a FIFO, a device such as
/dev/null) is written into, never replaced; its stream is made in a temporary file first.

A progress bar appears on a terminal for inputs longer than 5 seconds. At the end one line sums
up frames, seconds, speed relative to real time, the tuning and the peak of each output channel;
samples that are not finite numbers (NaN or infinity, which a float input may carry) are counted
there: a float output keeps them as the plug-in made them, other outputs get 0 for NaN and full
scale for infinity.

Exit status: 0 on success, 1 when the work fails, 2 for a wrong command line (nothing is
written then), 130 after Ctrl-C (SIGINT), 143 after SIGTERM and 129 after SIGHUP.

Examples:
  hvtremolo-render --demo --plot demo.png demo.wav
  hvtremolo-render --program waves --plot waves.png --demo waves.wav
  hvtremolo-render --program warble --param mix=0.8 guitar.flac guitar-warble.flac
  hvtremolo-render --bits 24 --param tremolo-speed=0.3 in.wav out.wav
  sox in.wav -t wav - | hvtremolo-render - - | sox -t wav - out.wav
)HELP";
}
