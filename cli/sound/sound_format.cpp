#include "cli/sound/sound_format.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "cli/app/diagnostics.h"
#include "cli/plot/options.h"

namespace cli {

namespace {

using namespace std::string_view_literals;

struct Beginning {
    std::string_view bytes;  // ? is any byte
    std::string_view kind;
};
constexpr Beginning kBeginnings[] = {{"RIFF????WAVE"sv, "WAV"sv},
                                     {"RIFX????WAVE"sv, "WAV"sv},
                                     {"RF64????WAVE"sv, "RF64"sv},
                                     {"fLaC\0\0\0\x22"sv, "FLAC"sv},
                                     {"fLaC\x80\0\0\x22"sv, "FLAC"sv},
                                     {"FORM????AIFF"sv, "AIFF"sv},
                                     {"FORM????AIFC"sv, "AIFF"sv},
                                     {"caff\0\1"sv, "CAF"sv},
                                     {".snd\0"sv, "AU"sv},
                                     {"riff\x2E\x91\xCF\x11"sv, "W64"sv},
                                     {"OggS\0"sv, "Ogg"sv},
                                     {"ID3\2"sv, "MP3"sv},
                                     {"ID3\3"sv, "MP3"sv},
                                     {"ID3\4"sv, "MP3"sv},
                                     {"\xFF\xFB"sv, "MP3"sv},
                                     {"\xFF\xFA"sv, "MP3"sv},
                                     {"\xFF\xF3"sv, "MP3"sv},
                                     {"\xFF\xF2"sv, "MP3"sv}};

struct Container {
    int code;
    const char *name;
    std::string_view endings[3];  // of files; none: not written
};
constexpr Container kContainers[] = {{SF_FORMAT_WAV, "WAV", {"wav"sv, "wave"sv}},
                                     {SF_FORMAT_WAVEX, "WAV", {}},
                                     {SF_FORMAT_RF64, "RF64", {"rf64"sv}},
                                     {SF_FORMAT_FLAC, "FLAC", {"flac"sv}},
                                     {SF_FORMAT_AIFF, "AIFF", {"aiff"sv, "aif"sv, "aifc"sv}},
                                     {SF_FORMAT_CAF, "CAF", {"caf"sv}},
                                     {SF_FORMAT_AU, "AU", {"au"sv, "snd"sv}},
                                     {SF_FORMAT_W64, "W64", {"w64"sv}},
                                     {SF_FORMAT_OGG, "Ogg", {}},
                                     {SF_FORMAT_MPEG, "MP3", {}}};

// Endings of files that would not be what they are called.
constexpr std::string_view kNotWritten[] = {"mp3", "ogg", "oga", "opus", "m4a", "aac", "wma", "csv", "tsv", "txt"};

// What stands for samples that a container does not have, in the order in which it is tried.
struct Stand {
    int samples, instead;
};
constexpr Stand kStands[] = {{SF_FORMAT_PCM_U8, SF_FORMAT_PCM_S8},        {SF_FORMAT_PCM_S8, SF_FORMAT_PCM_U8},
                             {SF_FORMAT_ALAC_16, SF_FORMAT_PCM_16},       {SF_FORMAT_ALAC_20, SF_FORMAT_PCM_24},
                             {SF_FORMAT_ALAC_24, SF_FORMAT_PCM_24},       {SF_FORMAT_ALAC_32, SF_FORMAT_PCM_32},
                             {SF_FORMAT_VORBIS, SF_FORMAT_FLOAT},         {SF_FORMAT_VORBIS, SF_FORMAT_PCM_24},
                             {SF_FORMAT_OPUS, SF_FORMAT_FLOAT},           {SF_FORMAT_OPUS, SF_FORMAT_PCM_24},
                             {SF_FORMAT_MPEG_LAYER_I, SF_FORMAT_FLOAT},   {SF_FORMAT_MPEG_LAYER_I, SF_FORMAT_PCM_24},
                             {SF_FORMAT_MPEG_LAYER_II, SF_FORMAT_FLOAT},  {SF_FORMAT_MPEG_LAYER_II, SF_FORMAT_PCM_24},
                             {SF_FORMAT_MPEG_LAYER_III, SF_FORMAT_FLOAT}, {SF_FORMAT_MPEG_LAYER_III, SF_FORMAT_PCM_24}};

constexpr const char *kWritten = "WAV, RF64, FLAC, AIFF, CAF, AU or W64";

bool agrees(std::string_view head, std::string_view wanted) {
    const auto same = [](char byte, char pattern) { return pattern == '?' || byte == pattern; };
    const std::size_t n = std::min(head.size(), wanted.size());
    return std::ranges::equal(head.substr(0, n), wanted.substr(0, n), same);
}

int container_of(int format) { return format & SF_FORMAT_TYPEMASK; }

bool is_lossy(int format) { return container_of(format) == SF_FORMAT_OGG || container_of(format) == SF_FORMAT_MPEG; }

std::string samples_name(int format) {
    SF_FORMAT_INFO info = {format & SF_FORMAT_SUBMASK, nullptr, nullptr};
    if (sf_command(nullptr, SFC_GET_FORMAT_INFO, &info, sizeof info) != 0 || info.name == nullptr) return "such";
    return info.name;
}

// The container that the ending of a file's name asks for, else that of the input; of the variants of a container the
// input's.
int container_for(int input, const std::string &file) {
    const std::string ending = suffix_of(file);
    if (std::ranges::find(kNotWritten, ending) != std::end(kNotWritten))
        reject("{}: a sound is written as {}; name a file with such an ending", file, kWritten);
    for (const Container &container : kContainers) {
        if (ending.empty() || std::ranges::find(container.endings, ending) == std::end(container.endings)) continue;
        return container.code == SF_FORMAT_WAV && is_wav(input) ? container_of(input) : container.code;
    }
    return container_of(input);
}

}  // namespace

std::string_view sound_kind(Source &source) {
    for (;;) {
        const std::string_view head = source.pending();
        bool undecided = false;
        for (const Beginning &beginning : kBeginnings) {
            if (!agrees(head, beginning.bytes)) continue;
            if (head.size() >= beginning.bytes.size()) return beginning.kind;
            undecided = true;
        }
        if (!undecided || !source.more()) return {};
    }
}

std::string container_name(int format) {
    const Container *const row = std::ranges::find(kContainers, container_of(format), &Container::code);
    return row == std::end(kContainers) ? "sound" : row->name;
}

int sample_bits(int format) {
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8: return 8;
        case SF_FORMAT_PCM_16:
        case SF_FORMAT_ALAC_16: return 16;
        case SF_FORMAT_ALAC_20: return 20;
        case SF_FORMAT_PCM_24:
        case SF_FORMAT_ALAC_24: return 24;
        case SF_FORMAT_PCM_32:
        case SF_FORMAT_ALAC_32: return 32;
        default: return 0;
    }
}

std::size_t sample_bytes(int format) {
    if (container_of(format) == SF_FORMAT_FLAC) return 0;
    switch (format & SF_FORMAT_SUBMASK) {
        case SF_FORMAT_PCM_S8:
        case SF_FORMAT_PCM_U8:
        case SF_FORMAT_ULAW:
        case SF_FORMAT_ALAW: return 1;
        case SF_FORMAT_PCM_16: return 2;
        case SF_FORMAT_PCM_24: return 3;
        case SF_FORMAT_PCM_32:
        case SF_FORMAT_FLOAT: return 4;
        case SF_FORMAT_DOUBLE: return 8;
        default: return 0;
    }
}

bool is_wav(int format) {
    const int container = container_of(format);
    return container == SF_FORMAT_WAV || container == SF_FORMAT_WAVEX || container == SF_FORMAT_RF64;
}

SF_INFO written_format(const SF_INFO &like, const std::string &input, const std::string &file) {
    SF_INFO format = like;
    const int container = container_for(like.format, file), samples = like.format & SF_FORMAT_SUBMASK;
    if (is_lossy(container))
        reject(
            "{}: is {}, a lossy format, which is read but not written; name the result with -o FILE.wav, .flac, "
            ".aiff or .caf",
            input, container_name(container));
    if (container == container_of(like.format)) return format;
    format.format = container | (is_lossy(like.format) ? 0 : samples);
    for (const Stand &stand : kStands)
        if (sf_format_check(&format) == 0 && stand.samples == samples) format.format = container | stand.instead;
    if (sf_format_check(&format) == 0)
        reject("{}: {} has no {} samples in {} channels; another ending chooses another format ({})", file,
               container_name(container), samples_name(samples), like.channels, kWritten);
    return format;
}

}  // namespace cli
