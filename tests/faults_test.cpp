// What is left when memory, the disk or the reader at the other end gives up.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mensura/mensura.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "allocations.h"
#include "support/folder.h"
#include "support/matrices.h"

// ---- Memory ----

#ifdef COUNTS_ALLOCATIONS

// Grants 0, 1, 2, ... allocations until the attempt returns that it reached its end.  No memory stays behind.
static void expect_all_or_nothing(const char *what, int step, int least, const std::function<bool()> &attempt) {
    bool done = false;
    int few = -step;
    while (!done && few < 10000) {
        const int before = alive;
        few += step;
        granted = few;
        done = attempt();  // grants memory again before it looks at its results
        granted = INT_MAX;
        EXPECT_EQ(alive, before) << what << ", granted " << few;
    }
    EXPECT_TRUE(done) << what;
    EXPECT_GE(few, least) << what;
}

// A function on n real and n imaginary parts does its whole work, or leaves them alone.
static void expect_whole_or_untouched(const char *what, int n, int least, auto call) {
    std::vector<double> original(2 * static_cast<std::size_t>(n));
    for (std::size_t i = 0; i < original.size(); ++i) original[i] = static_cast<double>(i * i % 17);
    std::vector<double> whole = original, data = original;
    call(whole.data(), whole.data() + n, n);
    expect_all_or_nothing(what, 1, least, [&] {
        data = original;
        call(data.data(), data.data() + n, n);
        granted = INT_MAX;
        EXPECT_TRUE(data == original || data == whole) << what << ' ' << n;
        return data == whole;
    });
}

TEST(Memory, without_it_data_stay_as_they_were) {
    testing::internal::CaptureStdout();
    for (const int n : {2048, 65536})
        expect_whole_or_untouched("FFT", n, 1, [](auto re, auto im, int m) { FFT(re, im, m, 0); });
    for (const int n : {8, 512, 1000}) {
        expect_whole_or_untouched("DFT", n, 1, [](auto re, auto im, int m) { DFT(re, im, m, 0); });
        expect_whole_or_untouched("RealSigDFT", n, 1, [](auto re, auto im, int m) {
            static double x[1000];
            std::copy_n(re, m, x);
            RealSigDFT(x, re, im, m);
        });
        expect_whole_or_untouched("WindowData", n, 1,
                                  [](auto x, auto, int m) { WindowData(x, m, wkHanning, 0, 0, 1); });
        expect_whole_or_untouched("dataZeroPhaseFilter", n, 3,
                                  [](auto x, auto, int m) { dataZeroPhaseFilter(x, m, 0.01, 0.5, 0); });
    }
    testing::internal::GetCapturedStdout();
    expect_whole_or_untouched("mensura_sos_filtfilt", 500, 1, [](auto x, auto, int m) {
        constexpr double kSections[] = {0.1, 0.2, 0.1, 1, -1.2, 0.5};
        const int left = granted;
        const int code = mensura_sos_filtfilt(kSections, 1, MENSURA_SOS_ENDS_ODD, -1, x, 1, x, 1, m, nullptr);
        granted = INT_MAX;
        EXPECT_EQ(code, left > 0 ? 0 : MENSURA_SOS_MEMORY);
    });
}

// Both of two matrices are made, or neither.
static void expect_made_or_null(const char *what, auto make) {
    expect_all_or_nothing(what, 1, 2, [&] {
        Matrix *made[2] = {};
        make(made);
        granted = INT_MAX;
        const bool done = made[0] != nullptr;
        EXPECT_TRUE(done || made[1] == nullptr) << what;
        for (Matrix *const m : made) matrix_delete(m);
        return done;
    });
}

TEST(Memory, without_it_a_matrix_is_null) {
    Matrix *const x = matrix_new(5, 4), *const square = matrix_new(4, 4), *const row = matrix_new(1, 4);
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 4; ++j) x->v[i][j] = 1.0 / (1 + i + j);
    Matrix *const infinite = matrix_copy(4, x->v, 5);
    infinite->v[2][2] = HUGE_VAL;
    expect_made_or_null("matrix_new", [](Matrix **made) { *made = matrix_new(3, 4); });
    expect_made_or_null("matrix_copy", [&](Matrix **made) { *made = matrix_copy(4, x->v, 5); });
    expect_made_or_null("matrix_mul", [&](Matrix **made) { *made = matrix_mul(x, square); });
    expect_made_or_null("matrix_minor", [&](Matrix **made) { *made = matrix_minor(x, 1); });
    expect_made_or_null("vmul", [&](Matrix **made) { *made = vmul(x->v[0], 4); });
    for (const Matrix *const m : {x, row, infinite})
        expect_made_or_null("householder", [m](Matrix **made) { householder(m, &made[0], &made[1]); });
    for (Matrix *const m : {x, square, row, infinite}) matrix_delete(m);
}

#endif

// ---- Files ----

class Files : public testing::Test {  // in a directory of its own
  protected:
    void SetUp() override { testing::internal::CaptureStdout(); }
    void TearDown() override { testing::internal::GetCapturedStdout(); }
    const support::Owner m_{matrix_new(300, 100)};  // its text is more than a pipe holds

  private:
    support::Folder folder_;
};

TEST_F(Files, on_a_full_disk_or_in_a_folder_that_takes_none) {
    std::filesystem::create_symlink("/dev/full", "dataQR.txt");
    std::filesystem::create_symlink("/dev/full", "test_rkf45.txt");
    for (const char *folder : {".", "/proc"}) {  // not even root can make a file in the second
        std::filesystem::current_path(folder);
        EXPECT_EQ(matrix_show(m_.get()), EOF);
        EXPECT_EQ(QRtest(), 0);
        test_rkf45();
    }
}

TEST_F(Files, whose_reader_goes_away) {
    std::signal(SIGPIPE, SIG_IGN);  // else the process ends, as any that writes to a closed pipe
    ASSERT_EQ(mkfifo("dataQR.txt", 0600), 0);
    std::jthread reader([] { close(open("dataQR.txt", O_RDONLY | O_CLOEXEC)); });
    EXPECT_EQ(matrix_show(m_.get()), EOF);
    std::signal(SIGPIPE, SIG_DFL);
}

#ifdef COUNTS_ALLOCATIONS
TEST_F(Files, without_memory_for_their_buffers) {
    expect_all_or_nothing("matrix_show", 1, 1, [&] { return matrix_show(m_.get()) == 0; });
    expect_all_or_nothing("QRtest", 97, 500, [] {
        const int result = QRtest();
        EXPECT_TRUE(result == 0 || result == -1) << result;
        return result == 0;
    });
    expect_all_or_nothing("test_rkf45", 1, 1, [] {
        std::filesystem::remove("test_rkf45.txt");
        test_rkf45();
        granted = INT_MAX;
        return std::filesystem::exists("test_rkf45.txt");
    });
}
#endif
