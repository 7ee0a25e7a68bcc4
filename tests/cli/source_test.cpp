// Packed files and other encodings: what comes in, through mensura filter.

#include <zlib.h>
#include <zstd.h>

#include "program.h"

using namespace std::string_literals;
using Pieces = std::vector<std::string>;

// Each piece in what is flushed for it; all of them together are one member.
static Pieces gzip(const Pieces &pieces) {
    z_stream state = {};
    EXPECT_EQ(deflateInit2(&state, 6, Z_DEFLATED, 16 + MAX_WBITS, 8, Z_DEFAULT_STRATEGY), Z_OK);
    Pieces packed;
    for (std::string piece : pieces) {
        std::string &out = packed.emplace_back(2 * piece.size() + 100, '\0');
        state.next_in = reinterpret_cast<Bytef *>(piece.data());
        state.avail_in = static_cast<uInt>(piece.size());
        state.next_out = reinterpret_cast<Bytef *>(out.data());
        state.avail_out = static_cast<uInt>(out.size());
        deflate(&state, packed.size() == pieces.size() ? Z_FINISH : Z_SYNC_FLUSH);
        out.resize(out.size() - state.avail_out);
    }
    deflateEnd(&state);
    return packed;
}

static Pieces zstd(const Pieces &pieces) {
    const std::unique_ptr<ZSTD_CStream, std::size_t (*)(ZSTD_CStream *)> state(ZSTD_createCStream(), ZSTD_freeCStream);
    ZSTD_CCtx_setParameter(state.get(), ZSTD_c_checksumFlag, 1);
    Pieces packed;
    for (const std::string &piece : pieces) {
        std::string &out = packed.emplace_back(2 * piece.size() + 100, '\0');
        ZSTD_inBuffer from = {piece.data(), piece.size(), 0};
        ZSTD_outBuffer to = {out.data(), out.size(), 0};
        const auto end = packed.size() == pieces.size() ? ZSTD_e_end : ZSTD_e_flush;
        EXPECT_EQ(ZSTD_compressStream2(state.get(), &to, &from, end), 0U);
        out.resize(to.pos);
    }
    return packed;
}

static std::string gzipped(const std::string &text) { return gzip({text}).front(); }
static std::string zstd_of(const std::string &text) { return zstd({text}).front(); }

static std::string utf16(const std::u16string &text, bool little_endian) {
    std::string bytes;
    for (const char16_t unit : text)
        for (const int shift : {little_endian ? 0 : 8, little_endian ? 8 : 0})
            bytes += static_cast<char>(unit >> shift & 0xFF);
    return bytes;
}

TEST_F(CommandLine, packed_and_encoded_tables_are_read_like_plain_ones) {
    std::string rows;  // of several blocks
    for (std::size_t i = 0; const double x : signal(30000)) rows += std::to_string(x * std::cos(++i)) + ",\n";
    const std::string text = "Wasserdruck µ😀,é\r\n" + rows, half = text.substr(0, 99999), other = text.substr(99999);
    const std::u16string in_utf16 = u"\uFEFFWasserdruck µ😀,é\r\n" + std::u16string(rows.begin(), rows.end());
    write("plain", text);
    ASSERT_EQ(run(kLowpass + "plain"), 0) << err;
    const std::string one_way = out;
    ASSERT_EQ(run(kLowpass + "--zero-phase plain"), 0) << err;
    const std::string both_ways = out;
    EXPECT_TRUE(both_ways.starts_with("Wasserdruck µ😀,é\r\n"));
    for (const std::string &input :
         {gzipped(text), gzipped(half) + gzipped(other), gzipped(text) + std::string(1000, '\0'), zstd_of(text),
          zstd_of(half) + zstd_of(other), "\x50\x2A\x4D\x18\x02"s + "\0\0\0ab"s + zstd_of(text), utf16(in_utf16, true),
          utf16(in_utf16, false), gzipped(utf16(in_utf16, true)), zstd_of(utf16(in_utf16, false))}) {
        write("x", input);
        EXPECT_EQ(run(kLowpass + "x"), 0) << err;
        EXPECT_EQ(out, one_way);
        EXPECT_EQ(shell("cat x | $M " + kLowpass + "--zero-phase -"), 0) << err;
        EXPECT_EQ(out, both_ways);
    }
}

TEST_F(CommandLine, packed_sounds_and_sections_are_read_like_plain_ones) {
    std::string sound = "RIFF\x64\0\0\0WAVEfmt \x10\0\0\0\1\0\1\0\x40\x1F\0\0\x80\x3E\0\0\2\0\x10\0data\x40\0\0\0"s;
    for (char i = 0; i < 32; ++i) sound += {i, i};
    write("x.wav", sound);
    write("x.gz", gzipped(sound));
    write("x.zst", zstd_of(sound));
    ASSERT_EQ(run("filter lowpass --cutoff 1kHz x.wav"), 0) << err;
    const std::string filtered_sound = out;
    for (const char *const file : {"x.gz", "x.zst"}) {
        EXPECT_EQ(run("filter lowpass --cutoff 1kHz "s + file), 0) << err;
        EXPECT_EQ(out, filtered_sound);
    }
    write("sos.gz", gzipped("2,0,0,1,0,0\n"));
    write("x.csv", "x\n1\n2\n");
    EXPECT_EQ(shell("cat sos.gz | $M filter --sos - --quiet --force x.csv"), 0) << err;
    EXPECT_EQ(out, "x\n2\n4\n");
    EXPECT_EQ(shell("cat sos.gz | $M filter --sos - -"), 2);
    EXPECT_HAS(err, "--sos -: the data come from standard input already");
}

TEST_F(CommandLine, packed_and_encoded_lines_are_answered_one_by_one) {
    write("lines.sh",
          "mkfifo i o; timeout 10 \"$M\" average --length 2 <i >o & exec 3>i 4<o; cat p0 >&3; read -r a <&4\n"
          "read -r b <&4; cat p1 >&3; read -r c <&4; cat p2 >&3; exec 3>&-; wait; rm i o; echo \"$b $c\"\n");
    const Pieces lines = {"x\n1\n", "3\n", "5\n"};
    const Pieces wide_lines = {utf16(u"\uFEFFx\n1\n", true), utf16(u"3\n", true), utf16(u"5\n", true)};
    for (const Pieces &pieces : {gzip(lines), zstd(lines), wide_lines, gzip(wide_lines)}) {
        for (std::size_t i = 0; i < pieces.size(); ++i) write("p"s + std::to_string(i), pieces[i]);
        EXPECT_EQ(shell("timeout 60 sh lines.sh"), 0) << err;
        EXPECT_EQ(out, "1 2\n");
    }
}

TEST_F(CommandLine, what_comes_before_a_fault_is_passed_on_and_the_fault_is_named) {
    const std::string reserved = "\xFF\xFF\xFF\xFF", half_pair = "\x00\xD8"s, x = utf16(u"\uFEFFx\n1\n2\n", true);
    const Pieces gz = gzip({"x\n1\n2\n", "3\n"}), zst = zstd({"x\n1\n2\n", "3\n"});
    const auto changed = [](std::string text) { return ++text.back(), text; };
    for (const auto &[input, passed_on, reason] :
         {std::tuple{gz[0] + gz[1].substr(0, 1), "x\n1\n1.5\n", "is cut off: its gzip data end too early"},
          {zst[0] + zst[1].substr(0, 1), "x\n1\n1.5\n", "is cut off: its zstd data end too early"},
          {gz[0] + reserved, "x\n1\n1.5\n", "its gzip data are damaged: invalid block type"},
          {zst[0] + reserved, "x\n1\n1.5\n", "its zstd data are damaged: Data corruption detected"},
          {gz[0] + changed(gz[1]), "x\n1\n1.5\n2.5\n", "its gzip data are damaged: incorrect length check"},
          {zst[0] + changed(zst[1]), "x\n1\n1.5\n2.5\n", "its zstd data are damaged: Restored data doesn't match"},
          {gz[0] + gz[1] + "and more", "x\n1\n1.5\n2.5\n", "its gzip data are damaged: incorrect header check"},
          {"\x1F\x8B in text\n", "", "its gzip data are damaged: unknown compression method"},
          {"\x28\xB5\x2F\xFD in text\n", "", "its zstd data are damaged: "},
          {"\x28\xB5\x2F\xFD\0\x90\1\0\0"s, "", "a window of more than 128 MiB"},  // RFC 8878: 2^(10 + 0x90 / 8)
          {x + half_pair + "3\0\n\0"s, "x\n1\n1.5\n", "x:4: half of a surrogate pair stands alone"},
          {x + "\1\xDC"s, "x\n1\n1.5\n", "x:4: half of a surrogate pair stands alone"},
          {x + half_pair, "x\n1\n1.5\n", "x:4: is cut off within a character"},
          {x + "3", "x\n1\n1.5\n", "x:4: is cut off within a character"},
          {"PK\3\4\x14"s, "", "x: is a zip archive, perhaps of a spreadsheet (.xlsx, .ods); export the table as CSV"},
          {x.substr(2), "", "x:1: holds zero bytes; not a text file, or one in UTF-16 without a byte-order mark"}}) {
        write("x", input);
        expect_refused("derive --rate 1 x", reason);
        EXPECT_EQ(run("average --length 2 x"), 2);
        EXPECT_EQ(out, passed_on) << reason;
        EXPECT_HAS(err, reason);
    }
}
