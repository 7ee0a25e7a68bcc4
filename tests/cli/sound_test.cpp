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

// The lengths of the whole and of the samples in the place of those of wav_of().
static std::string with_lengths(std::string wav, std::uint64_t whole, std::uint64_t samples) {
    return wav.replace(4, 4, little_endian(whole, 4)).replace(40, 4, little_endian(samples, 4));
}

// Of 64-bit lengths, in a chunk before all others.
static std::string rf64_of(const std::string &wav, std::uint64_t samples) {
    const std::string lengths = little_endian(0, 8) + little_endian(samples, 8) + std::string(12, '\0');
    return "RF64\xFF\xFF\xFF\xFFWAVEds64" + little_endian(28, 4) + lengths +
           with_lengths(wav, 0, 0xFFFFFFFF).substr(12);
}

// libsndfile would read beyond its table of mu-law codes.
TEST_F(CommandLine, mu_law_beyond_full_scale_is_clipped) {
    write("x.au", std::string(".snd\0\0\0\x18\0\0\0\x08\0\0\0\x01\0\0\x1F\x40\0\0\0\x01", 24) +
                      "\x10\x90\x10\x90\x10\x90\x10\x90");
    write("loud.csv", "1e9,0,0,1,0,0\n");
    EXPECT_EQ(run("filter --sos loud.csv x.au -o y.au"), 0) << err;
    EXPECT_HAS(err, "8 samples exceeded full scale and were clipped");
    EXPECT_EQ(run("stats y.au"), 0);
    EXPECT_HAS(out, "min,-0.98");
}

TEST_F(CommandLine, sound_is_filtered_channel_by_channel_in_its_format) {
    std::vector<double> x = signal(600);
    for (double &sample : x) sample = std::round(sample * 32768) / 32768;  // which every format holds
    for (const Format &f : {Format{1, 16, 2}, Format{1, 24, 1}, Format{3, 32, 3}}) {
        std::vector<double> y(x.size()), z(x.size());
        for (std::size_t k = 0; k < f.channels; ++k) {
            std::vector<double> channel;
            for (std::size_t i = k; i < x.size(); i += f.channels) channel.push_back(x[i]);
            const std::vector<double> there = one_way(low_pass(1000, 1, 8000), channel);
            const std::vector<double> and_back = both_ways(low_pass(1000, 2, 8000), channel);
            for (std::size_t i = 0; i < channel.size(); ++i) {
                y[i * f.channels + k] = there[i];
                z[i * f.channels + k] = and_back[i];
            }
        }
        write("x.wav", wav_of(f, x));
        EXPECT_EQ(run("filter lowpass --cutoff 1kHz --quiet x.wav -o y.wav"), 0);
        EXPECT_EQ(read("y.wav").substr(12, 24), read("x.wav").substr(12, 24));  // the chunk that tells the format
        EXPECT_TRUE(read("y.wav").ends_with("data" + little_endian(600 * f.bits / 8, 4) + sound_of(f, y))) << f.bits;
        EXPECT_EQ(shell("cat x.wav | $M filter lowpass --cutoff 1kHz --quiet | cat"), 0);
        EXPECT_TRUE(out.ends_with(sound_of(f, y))) << f.bits;
        EXPECT_EQ(err, "");
        EXPECT_EQ(run("filter lowpass --cutoff 1kHz --quiet --zero-phase x.wav"), 0);
        EXPECT_TRUE(out.ends_with("data" + little_endian(600 * f.bits / 8, 4) + sound_of(f, z))) << f.bits;
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

// Where a length stands for one that was not known, the sound goes on to the end; from a pipe as from a file.
TEST_F(CommandLine, sound_of_unknown_length_is_read_to_its_end) {
    const std::string wav = wav_of({1, 16, 2}, signal(10000));
    write("x.wav", wav);
    ASSERT_EQ(run("filter lowpass --cutoff 1kHz --quiet x.wav"), 0);
    const std::string samples = out.substr(44);
    std::vector<std::string> sounds = {rf64_of(wav, 20000), rf64_of(wav, 0), rf64_of(wav, ~0ULL),
                                       "RF64" + with_lengths(wav, 0, 0xFFFFFFFF).substr(4), with_lengths(wav, 0, 0)};
    for (const std::uint64_t length : {0x7FFFF000U, 0x7FFFFFFFU})
        sounds.push_back(with_lengths(wav, length + 36, length));
    for (const std::uint64_t length : {0x80000000U, 0xFFFFFFFCU, 0xFFFFFFFFU})
        sounds.push_back(with_lengths(wav, 0xFFFFFFFF, length));
    for (const std::string &sound : sounds) {
        write("u.wav", sound);
        for (const char *line : {"$M filter lowpass --cutoff 1kHz --quiet u.wav",
                                 "cat u.wav | $M filter lowpass --cutoff 1kHz --quiet | cat"}) {
            EXPECT_EQ(shell(line), 0) << err;
            EXPECT_TRUE(out.ends_with(samples)) << line << &sound - sounds.data();
        }
        write("u.wav", sound.substr(0, sound.size() - 3));
        EXPECT_EQ(run("filter lowpass --cutoff 1kHz --quiet u.wav"), &sound == sounds.data() ? 2 : 0);
        EXPECT_HAS(err, &sound == sounds.data() ? "is cut off: 19997 of 20000 bytes" : "bytes left out: 1");
    }
    write("u.wav", with_lengths(wav, 0x7FFFF004 + 36 + 12, 0x7FFFF004) + "LIST" + little_endian(4, 4) + "INFO");
    expect_refused("filter lowpass --cutoff 1kHz <u.wav", "of 2147479556 bytes of sound are there");  // a true length
}

// The sender waits for the first samples before it sends more.
TEST_F(CommandLine, sound_in_a_pipe_is_filtered_while_it_comes) {
    const Format mono{1, 8, 1};
    write("x.wav", with_lengths(wav_of(mono, {0.5, 0.25, 0.5}), 0xFFFFFFFF, 0xFFFFFFFF));
    EXPECT_EQ(shell("mkfifo back; (cat x.wav; head -c 47 back >first; printf '\\1\\2') | timeout 20 $M filter allpass "
                    "--cutoff 1kHz --quiet | tee -p back"),
              0);
    EXPECT_EQ(read("first").size(), 47u);
    EXPECT_EQ(out.size(), 49u);
    EXPECT_EQ(out.substr(0, 44), read("x.wav").substr(0, 44));
    // Where all is known before anything is written, so is the length.
    EXPECT_EQ(shell("$M filter allpass --cutoff 1kHz --zero-phase --quiet <x.wav | cat"), 0);
    EXPECT_EQ(out.substr(0, 44), with_lengths(wav_of(mono, {0, 0, 0}), 40, 3).substr(0, 44));
    EXPECT_EQ(out.size(), 48u) << "filled up to an even length";
    // Lengths go into the header's chunks, not into a title that holds the name of one.
    const std::string title = "INFOINAM" + little_endian(18, 4) + std::string("an artifact in it\0", 18);
    write("x.wav", wav_of(mono, {0.5, 0.25, 0.5, 0}).insert(36, "LIST" + little_endian(30, 4) + title));
    EXPECT_EQ(shell("$M filter allpass --cutoff 1kHz --quiet x.wav | cat"), 0) << err;
    EXPECT_HAS(out, title);
}

TEST_F(CommandLine, sound_is_written_in_the_format_that_the_name_ends_with) {
    write("x.wav", wav_of({1, 16, 2}, signal(3000)));
    const std::string kept = "filter allpass --cutoff 1kHz --quiet ", allpass = "$M " + kept;
    ASSERT_EQ(run(kept + "x.wav -o y.wav"), 0);
    for (const auto &[ending, magic] : {std::pair("flac", "fLaC"),
                                        {"aiff", "FORM"},
                                        {"caf", "caff"},
                                        {"au", ".snd"},
                                        {"w64", "riff"},
                                        {"rf64", "RF64"}}) {
        const std::string file = std::string("y.") + ending;
        EXPECT_EQ(run(kept + "x.wav -o " + file), 0) << err;
        EXPECT_TRUE(read(file).starts_with(magic)) << ending;
        EXPECT_EQ(run("average --length 2 " + file), 2);
        EXPECT_HAS(err, "is a sound (");
        ASSERT_EQ(shell(allpass + "y.wav -o a.wav && cat " + file + " | " + allpass + "-o b.wav"), 0) << err;
        EXPECT_TRUE(read("b.wav").ends_with(read("a.wav").substr(44))) << ending;
        write("cut", read(file).substr(0, 700));
        EXPECT_EQ(run(kept + "cut"), 2) << ending;
        EXPECT_HAS(err, "cut: is cut off");
        EXPECT_EQ(shell("cat " + file + " | " + allpass + "| cat"), 0);
        EXPECT_TRUE(out.starts_with(std::string(magic) == "RF64" ? "RIFF" : magic)) << ending;
    }
    write("f.wav", wav_of({3, 32, 1}, {0.5, 0.25}));
    std::string mp3;  // 32 kbit/s and 32 kHz in mono: frames of 144 bytes that hold silence
    for (int i = 0; i < 20; ++i) mp3 += "\xFF\xFB\x18\xC0" + std::string(140, '\0');
    write("x.mp3", mp3);
    expect_refusals(kept, {{"f.wav -o y.flac", "y.flac: FLAC has no 32 bit float samples"},
                           {"x.wav -o y.mp3", "y.mp3: a sound is written as WAV"},
                           {"x.wav -o y.csv", "y.csv: a sound is written as WAV"},
                           {"x.mp3", "x.mp3: is MP3, a lossy format"}});
    EXPECT_EQ(run(kept + "x.mp3 -o y.wav"), 0) << err;
    EXPECT_EQ(read("y.wav").substr(20, 2), little_endian(3, 2)) << "floating-point numbers";
}
