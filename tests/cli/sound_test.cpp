// Sound files, through mensura filter.

#include <bit>

#include "program.h"

struct Format {
    unsigned code, bits, channels;  // code 1: integers, 3: floating-point numbers
};

static std::string little_endian(std::uint64_t value, unsigned count) {
    std::string bytes;
    for (; count > 0; --count, value >>= 8) bytes += static_cast<char>(value & 0xFF);
    return bytes;
}

static std::string sound_of(const Format &f, const std::vector<double> &samples) {
    std::string sound;
    for (const double x : samples) {
        const auto whole = static_cast<std::uint64_t>(std::llround(std::ldexp(x, static_cast<int>(f.bits) - 1)));
        const auto single = std::bit_cast<std::uint32_t>(static_cast<float>(x));
        sound += little_endian(f.code == 3 ? single : whole, f.bits / 8);
    }
    return sound;
}

static std::string wav_of(const Format &f, const std::vector<double> &samples) {
    const std::string sound = sound_of(f, samples);
    const unsigned frame = f.channels * f.bits / 8;
    return "RIFF" + little_endian(36 + sound.size(), 4) + "WAVEfmt " + little_endian(16, 4) + little_endian(f.code, 2) +
           little_endian(f.channels, 2) + little_endian(8000, 4) + little_endian(8000 * frame, 4) +
           little_endian(frame, 2) + little_endian(f.bits, 2) + "data" + little_endian(sound.size(), 4) + sound;
}

TEST_F(CommandLine, sound_is_filtered_channel_by_channel_in_its_format) {
    std::vector<double> x = signal(600);
    for (double &sample : x) sample = std::round(sample * 32768) / 32768;  // which every format holds
    for (const Format &f : {Format{1, 16, 2}, Format{1, 24, 1}, Format{3, 32, 3}}) {
        std::vector<double> y(x.size());
        for (std::size_t k = 0; k < f.channels; ++k) {
            std::vector<double> channel;
            for (std::size_t i = k; i < x.size(); i += f.channels) channel.push_back(x[i]);
            channel = one_way(low_pass(1000, 1, 8000), channel);
            for (std::size_t i = 0; i < channel.size(); ++i) y[i * f.channels + k] = channel[i];
        }
        write("x.wav", wav_of(f, x));
        EXPECT_EQ(run("filter lowpass --cutoff 1kHz --quiet x.wav -o y.wav"), 0);
        EXPECT_EQ(read("y.wav").substr(12, 24), read("x.wav").substr(12, 24));  // the chunk that tells the format
        EXPECT_TRUE(read("y.wav").ends_with("data" + little_endian(600 * f.bits / 8, 4) + sound_of(f, y))) << f.bits;
        EXPECT_EQ(shell("cat x.wav | $M filter lowpass --cutoff 1kHz --quiet | cat"), 0);
        EXPECT_TRUE(out.ends_with(sound_of(f, y))) << f.bits;
        EXPECT_EQ(err, "");
        // Forwards and backwards an all-pass gives the very samples back, but for the end where it turns.
        EXPECT_EQ(run("filter allpass --cutoff 1kHz --zero-phase x.wav"), 0);
        const std::size_t start = out.find("data") + 8, count = 300 * f.bits / 8;
        if (f.code == 1) {
            EXPECT_EQ(out.substr(start, count), sound_of(f, x).substr(0, count)) << f.bits;
        }
    }
}

// The blocks of 4096 frames in which a sound is read do not show.
TEST_F(CommandLine, sound_is_decimated_like_a_table) {
    const Format three{3, 32, 3};
    std::vector<double> x = signal(3 * 9000);
    for (double &sample : x) sample = static_cast<float>(sample);
    std::string layout;
    for (int i = 0; i < 9000; ++i) layout += "@,@,@\n";
    write("x.csv", filled(layout, x));
    write("x.wav", wav_of(three, x));
    for (const char *option : {"", " --zero-phase"}) {
        EXPECT_EQ(run("decimate 5 --quiet x.csv" + std::string(option)), 0) << err;
        std::vector<double> y;
        for (const std::vector<double> &row : rows(out)) y.insert(y.end(), row.begin(), row.end());
        ASSERT_EQ(y.size(), 3u * 1800);
        EXPECT_EQ(run("decimate 5 --quiet x.wav" + std::string(option)), 0) << err;
        EXPECT_EQ(out.substr(24, 4), little_endian(1600, 4)) << "the rate";
        EXPECT_TRUE(out.ends_with(sound_of(three, y))) << option;
    }
    expect_refused("decimate 7 x.wav", "FACTOR 7: a sound has a whole rate, and 8000 Hz / 7 is 1142.86 Hz");
}

TEST_F(CommandLine, clipped_and_damaged_sound_is_reported) {
    const std::string wav = wav_of({1, 16, 1}, {0, 0.75, -0.75, 0.75, -0.75});
    write("x.wav", wav);
    EXPECT_EQ(run("filter allpass --cutoff 1kHz --gain 20dB x.wav -o y.wav"), 0);
    EXPECT_HAS(err, "samples exceeded full scale and were clipped");
    EXPECT_HAS(read("y.wav"), "\xFF\x7F");  // the largest sample there is
    EXPECT_EQ(run("filter allpass --cutoff 1kHz --leading-sections --gain 7000dB --force x.wav"), 0) << err;
    EXPECT_TRUE(out.ends_with(std::string(10, '\0'))) << "what is not a number is silence";
    write("cut.wav", wav.substr(0, wav.size() - 3));
    write("torn.wav", wav.substr(0, 22) + '\3' + wav.substr(23));  // three channels in samples of one
    expect_refusals("filter lowpass --cutoff 1kHz ", {{"cut.wav", "cut.wav: is cut off"},
                                                      {"torn.wav --zero-phase", "torn.wav: ends within a sample"},
                                                      {"x.wav --rate 9kHz", "is sampled at 8000 Hz"},
                                                      {"x.wav --column=1", "--column is for tables"}});
}
