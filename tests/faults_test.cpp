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

namespace {

// ---- Memory ----

#ifdef COUNTS_ALLOCATIONS

// Grants 0, 1, 2, ... allocations until the attempt, which tells whether it reached its end, does.  Nothing stays behind.
void expect_all_or_nothing(const std::string &what, int least, const std::function<bool()> &attempt) {
    bool done = false;
    int few = -1;
    while (!done && few < 1000) {
        const int before = alive;
        granted = ++few;
        done = attempt();  // restores what is granted before it looks at its results
        EXPECT_EQ(alive, before) << what << ", granted " << few;
    }
    EXPECT_TRUE(done) << what;
    EXPECT_GE(few, least) << what;
}

TEST(Memory, without_it_data_stay_as_they_were) {
    for (const int n : {8, 512, 1000}) {
        std::vector<double> original(2 * static_cast<std::size_t>(n));
        for (std::size_t i = 0; i < original.size(); ++i) original[i] = static_cast<double>(i * i % 17);
        const auto expect_whole = [&](const char *what, int least, auto call) {
            std::vector<double> whole = original, data = original;
            call(whole.data(), whole.data() + n, n);
            expect_all_or_nothing(what, least, [&] {
                data = original;
                call(data.data(), data.data() + n, n);
                granted = INT_MAX;
                EXPECT_TRUE(data == original || data == whole) << what << ' ' << n;
                return data == whole;
            });
        };
        if (IsValidFFTSize(n) != 0) expect_whole("FFT", 1, [](auto re, auto im, int m) { FFT(re, im, m, 0); });
        expect_whole("DFT", 1, [](auto re, auto im, int m) { DFT(re, im, m, 0); });
        expect_whole("RealSigDFT", 1, [out = original](auto x, auto, int m) mutable {
            std::copy_n(x, m, out.begin());
            RealSigDFT(x, out.data(), out.data() + m, m);
            std::copy_n(out.begin(), m, x);
        });
        expect_whole("WindowData", 1, [](auto x, auto, int m) { WindowData(x, m, wkHanning, 0, 0, 1); });
        testing::internal::CaptureStdout();
        expect_whole("dataZeroPhaseFilter", 3, [](auto x, auto, int m) { dataZeroPhaseFilter(x, m, 0.01, 0.5, 0); });
        testing::internal::GetCapturedStdout();
    }
}

TEST(Memory, without_it_a_matrix_is_null) {
    const auto expect_matrices = [](const char *what, auto make) {
        expect_all_or_nothing(what, 2, [&] {
            Matrix *made[2] = {};
            make(made);
            granted = INT_MAX;
            const bool done = made[0] != nullptr;
            EXPECT_TRUE(done || made[1] == nullptr) << what;
            for (Matrix *const m : made) matrix_delete(m);
            return done;
        });
    };
    Matrix *const x = matrix_new(5, 4), *const square = matrix_new(4, 4), *const row = matrix_new(1, 4);
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 4; ++j) x->v[i][j] = 1.0 / (1 + i + j);
    Matrix *const infinite = matrix_copy(4, x->v, 5);
    infinite->v[2][2] = HUGE_VAL;
    expect_matrices("matrix_new", [](Matrix **made) { *made = matrix_new(3, 4); });
    expect_matrices("matrix_copy", [&](Matrix **made) { *made = matrix_copy(4, x->v, 5); });
    expect_matrices("matrix_mul", [&](Matrix **made) { *made = matrix_mul(x, square); });
    expect_matrices("matrix_minor", [&](Matrix **made) { *made = matrix_minor(x, 1); });
    expect_matrices("vmul", [&](Matrix **made) { *made = vmul(x->v[0], 4); });
    for (const Matrix *const m : {x, row, infinite})
        expect_matrices("householder", [m](Matrix **made) { householder(m, &made[0], &made[1]); });
    for (Matrix *const m : {x, square, row, infinite}) matrix_delete(m);
}

#endif

// ---- Files ----

class Files : public testing::Test {  // in a directory of its own
  protected:
    void SetUp() override {
        ASSERT_NE(mkdtemp(dir_.data()), nullptr);
        std::filesystem::current_path(dir_);
        testing::internal::CaptureStdout();
    }
    void TearDown() override {
        testing::internal::GetCapturedStdout();
        std::filesystem::current_path(home_);
        std::filesystem::remove_all(dir_);
        matrix_delete(m_);
    }
    Matrix *m_ = matrix_new(300, 100);  // its text is more than a pipe holds

  private:
    std::string dir_ = (std::filesystem::temp_directory_path() / "faults_").string() + std::string(6, 'X');
    std::filesystem::path home_ = std::filesystem::current_path();
};

TEST_F(Files, on_a_full_disk_or_in_a_folder_that_takes_none) {
    std::filesystem::create_symlink("/dev/full", "dataQR.txt");
    std::filesystem::create_symlink("/dev/full", "test_rkf45.txt");
    EXPECT_EQ(matrix_show(m_), EOF);
    EXPECT_EQ(QRtest(), 0);
    test_rkf45();
    std::filesystem::current_path("/proc");  // not even root can make a file there
    EXPECT_EQ(matrix_show(m_), EOF);
    EXPECT_EQ(QRtest(), 0);
    test_rkf45();
}

TEST_F(Files, whose_reader_goes_away) {
    std::signal(SIGPIPE, SIG_IGN);  // else the process ends, as any that writes to a closed pipe
    ASSERT_EQ(mkfifo("dataQR.txt", 0600), 0);
    std::jthread reader([] { close(open("dataQR.txt", O_RDONLY | O_CLOEXEC)); });
    EXPECT_EQ(matrix_show(m_), EOF);
    std::signal(SIGPIPE, SIG_DFL);
}

#ifdef COUNTS_ALLOCATIONS
TEST_F(Files, without_memory_for_their_buffers) {
    const auto with_memory_again = [](bool done) {
        granted = INT_MAX;
        return done;
    };
    expect_all_or_nothing("matrix_show", 1, [&] { return with_memory_again(matrix_show(m_) == 0); });
    expect_all_or_nothing("test_rkf45", 1, [&] {
        std::filesystem::remove("test_rkf45.txt");
        test_rkf45();
        return with_memory_again(std::filesystem::exists("test_rkf45.txt"));
    });
    int few = 0, result = -1;
    for (; result != 0 && few < 10000; few += 97) {  // of some thousand
        const int before = alive;
        granted = few;
        result = QRtest();
        granted = INT_MAX;
        EXPECT_TRUE((result == -1 || result == 0) && alive == before) << few;
    }
    EXPECT_EQ(result, 0);
    EXPECT_GT(few, 500);
}
#endif

}  // namespace
