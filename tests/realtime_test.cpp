// What a control loop calls for every sample or update allocates no memory, makes no system call and stays on a small
// stack.  That it takes no lock, abi/imports.sh checks.
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <mensura/mensura.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "allocations.h"
#include "support/reference/smooth.h"

constexpr int kChannels = 10, kMostStates = 99, kNoFilter = 77;

static TIIRFilterBank bank;
static CentralDiffOnline slopes[kChannels];
static AmplitudeLimitOnline limits[kChannels];
static LimitAverageOnline limited[kChannels];
static MovingAverageBank averages;
static KalmanFilter kf;
static RMATRIX square, other, result;
static CplxD z, w, roots[9];
static double sample, tame[20], samples[kMostStates], out[kMostStates];
static double re[1024], im[1024];
static double model[5][kMostStates * kMostStates], *rows[kMostStates];
static int found, states, measured;
static mensura_sos_request request;
static mensura_sos_requirement requirement;
static double sos[6 * MENSURA_SOS_MAX_SECTIONS], registers[4 * MENSURA_SOS_MAX_SECTIONS], work[200];
static ptrdiff_t settled;

static int grow(double, const double *y, void *, double *dydt) {
    for (std::size_t i = 0; i < std::size(tame); ++i) dydt[i] = 0.1 * y[i];
    return 0;
}

static void prepare(int n) {
    states = n;
    mensura_sos_default_request(&request, sizeof request);
    request.rate = 360;
    request.edge[0] = 40;
    request.family = pfElliptic;
    found = mensura_sos_design(&request, sos, MENSURA_SOS_MAX_SECTIONS);
    requirement = {sizeof requirement, ptLowPass, 1, 0, 1, {0.1, 0}, {0.2, 0}, 1, 60};
    measured = n / 3;
    initTIIRFilters(&bank, ptNotch, kChannels, 60.0, 360.0);
    init_central_difference_onlines(slopes, kChannels, 0.01);
    init_amlitude_limit_filer_onlines(limits, kChannels, 0.5);
    init_amlitude_limit_move_average_filter_onlines(limited, 16, kChannels, 0.5);
    init_move_average_filter_onlines(&averages, 16, kChannels);
    initKalmanFilter_d(&kf, getKalmanFilterA(model[0], n, 0.01), getKalmanFilterC(model[1], measured),
                       getKalmanFilterQ(model[2], n, 1e-4, 0, 0, 1e-2, 0, 1),
                       getKalmanFilterR(model[3], measured, 0.25), getKalmanFilterP(model[4], n, 1.0), nullptr,
                       measured, n);
    for (int i = 0; i < n; ++i) rows[i] = model[0] + i * n;
    initRMATRIX_identity(&square, n, n);
}

struct Call {
    int kilobytes;  // of stack at most: what the headers say, or 4
    const char *text;
    void (*run)();
};
#ifdef NDEBUG
#define CALL(optimised, plain, ...)                  \
    Call {                                           \
        optimised, #__VA_ARGS__, [] { __VA_ARGS__; } \
    }
#else
#define CALL(optimised, plain, ...)              \
    Call {                                       \
        plain, #__VA_ARGS__, [] { __VA_ARGS__; } \
    }
#endif

const Call kCalls[] = {
    CALL(4, 4, z = CplxDPow(CplxDConj(getCplxD(sample, 0.5)), sample); w = CplxDSub(CplxDMult_coef(z, sample), z)),
    CALL(4, 4, w = CplxDDivision(CplxDAdd(CplxDSin(z), CplxDTan(w)), CplxDMult(CplxDCos(w), z)); z.re = CplxDCabs(w)),
    CALL(4, 4,
         z.re = IIRFilter(bank.Filters, sample) + SingleFreqDFT(samples, 9, sample) + Goertzel(samples, 9, sample)),
    CALL(4, 10, IIRFilters(&bank, samples, out)),
    CALL(5, 10, out[0] = SectCalc(sample, 1, 0, bank.Filters->Coeffs)),
    CALL(12, 28, FilterWithIIR(samples, out, states, bank.Filters->Coeffs)),
    CALL(32, 32, CalcIIRFilterCoeff({ptNotch, sample, 0.1, 0, {pfInverseChebyshev, 15, 0.1, 60, 0}})),
    CALL(4, 4, central_difference_online(slopes, sample); amlitude_limit_filer_online(limits, sample)),
    CALL(4, 4, move_average_filter_online(averages.Filters, sample);
         amlitude_limit_move_average_filter_online(limited, sample)),
    CALL(4, 4, central_difference_onlines(slopes, samples, out, 9); amlitude_limit_filer_onlines(limits, out, out, 9)),
    CALL(4, 4, move_average_filter_onlines(&averages, samples, out);
         amlitude_limit_move_average_filter_onlines(limited, samples, out, kChannels)),
    CALL(4, 4, setRMATRIX1_ptr(rows, states, states, &other); setRMATRIX_ptr(model[0], states, states, &result)),
    CALL(4, 4, rmatrix_add_ptr(&square, &other, &result); rmatrix_sub_ptr(&square, &other, &result)),
    CALL(4, 4, copyRMATRIX(rmatrix_transpose_ptr(&square, &other), &result); rmatrix_to_vector(&result, out)),
    CALL(4, 35, rmatrix_multi_ptr(&square, &square, &result);
         getKalmanFilter_out_d(&kf, getKalmanFilter_state_d(&kf, out))),
    CALL(101, 110, rmatrix_inverse_ptr(&square, &result)),
    CALL(261, 440, result = rmatrix_multi(square, square)),
    CALL(261, 440, result = rmatrix_inverse(square)),
    CALL(101, 110, setRMATRIX_ptr(samples, measured, 1, &other); KalmanFilter_update(&kf, &other);
         KalmanFilter_update1(&kf, &other, &square)),
    CALL(101, 110, KalmanFilter_update_d(&kf, samples, out); KalmanFilter_update1_d1(&kf, samples, rows, out)),
    CALL(101, 110, KalmanFilter_update1_d(&kf, samples, getKalmanFilterA(model[0], states, sample), out)),
    CALL(20, 80, re[7] = sample; FFT(re, im, 1024, 0); FFT(im, re, 512, 1); FFT(re, im, 8, 0)),
    CALL(21, 24, found = FindRoots(9, samples, roots)),
    CALL(4, 13, IIRFilterZeroPhase(bank.Filters, samples, out, states)),
    CALL(4, 35,
         for (const auto &smoother
              : reference::kSmoothers) smoother.run(samples, out, states)),
    CALL(4, 35, central_difference(samples, out, states, 0.01)),
    CALL(10, 10, request.edge[0] = 100 * std::abs(sample); mensura_sos_design(&request, sos, MENSURA_SOS_MAX_SECTIONS)),
    CALL(10, 10, mensura_sos_order(&requirement, -1, 0, &request, sizeof request)),
    CALL(5, 13, mensura_sos_filter(sos, 3, registers, samples, 1, out, 1, states);
         mensura_sos_filter_channels(sos, 3, registers, 5, samples, 5, 1, out, 5, 1, states / 5)),
    CALL(5, 13, mensura_sos_steady_state(sos, 3, sample, registers);
         mensura_sos_filtfilt(sos, 3, MENSURA_SOS_ENDS_ODD, 8, samples, 1, out, 1, states, work)),
    CALL(4, 4, mensura_sos_response(sos, 3, 360, &sample, &z.re, &z.im, 1)),
    CALL(4, 4, mensura_sos_group_delay(sos, 3, 360, &sample, out, 1); mensura_sos_pole_radius(sos, 3, out)),
    CALL(4, 4, mensura_sos_extremes(sos, 3, 360, 0, 100, out, nullptr);
         mensura_sos_crossings(sos, 3, 360, sample, out, 9)),
    CALL(5, 13, mensura_sos_step_response(sos, 3, out, 9); mensura_sos_impulse_response(sos, 3, out, 9);
         mensura_sos_step_figures(sos, 3, 0.1, 1000, out, &settled)),
    CALL(4, 4, rkf45(0, 0.01, 1, 1e-6, grow, tame, 20, nullptr, out)),
    CALL(4, 4, rkf452(0, 0.01, 100, grow, tame, 20, nullptr, out)),
};

// Ordinary samples first, then all that a broken sensor may send.
static void run_often(const Call &call, int times) {
    constexpr double kOdd[] = {0.2, NAN, -HUGE_VAL, 0.0, 1.7e308, -0.3, HUGE_VAL, -1.7e308, 5e-324, 0.1};
    for (int i = 0; i < times; ++i) {
        sample = square.data[1] = i < times / 2 ? 0.4 * std::sin(i) : kOdd[i % 10];
        std::ranges::fill(tame, std::abs(sample) < 1 ? sample : NAN);  // beyond 1e15 an integrator prints a line
        std::ranges::fill(samples, sample);
        resetKalmanFilter(&kf);  // a NaN has emptied it
        call.run();
    }
}

// The exit code of a process that may do nothing but end, and is killed at any other system call; 1 if it allocates.
static int confined(const Call &call) {
    sock_filter steps[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                           BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_exit_group, 0, 1),
                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
                           BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS)};
    sock_fprog program{std::size(steps), steps};
    const pid_t child = fork();
    if (child == 0) {
        if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
            _exit(kNoFilter);
        const int before = allocations;
        run_often(call, 200);
        syscall(SYS_exit_group, allocations != before);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

TEST(RealTime, functions_allocate_nothing_and_make_no_system_call) {
    if (SANITIZED) GTEST_SKIP() << "a sanitizer does both";
    prepare(9);
    if (confined(CALL(0, 0, sample = 0)) == kNoFilter) GTEST_SKIP() << "system calls cannot be filtered here";
    EXPECT_EQ(confined(CALL(0, 0, getppid())), -SIGSYS);
    EXPECT_EQ(confined(CALL(0, 0, matrix_delete(matrix_new(1, 1)))), 1);
    for (const Call &call : kCalls) EXPECT_EQ(confined(call), 0) << call.text;
}

TEST(RealTime, functions_allocate_nothing_for_long_records_either) {
    std::vector<double> x(3000001, 1.0), y = x;
    const int n = static_cast<int>(x.size()), before = allocations;
    central_difference(x.data(), y.data(), n, 0.1);
    for (const auto &smoother : reference::kSmoothers) smoother.run(x.data(), y.data(), n);
    EXPECT_EQ(allocations, before);
}

// Bytes of its stack that a thread has written to.
static std::ptrdiff_t touched(Call call) {
    static unsigned char stack[1 << 20];
    std::ranges::fill(stack, 0xA5);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, stack, sizeof stack), 0);
    pthread_t thread;
    const auto run = [](void *what) -> void * {
        run_often(*static_cast<Call *>(what), 10);
        return nullptr;
    };
    EXPECT_EQ(pthread_create(&thread, &attributes, run, &call), 0);
    pthread_join(thread, nullptr);
    return std::end(stack) - std::ranges::find_if(stack, [](int byte) { return byte != 0xA5; });
}

TEST(RealTime, functions_stay_on_the_stack_that_the_headers_name) {
#ifndef __x86_64__
    GTEST_SKIP() << "frames have other sizes on other processors";
#endif
    if (SANITIZED) GTEST_SKIP() << "frames have other sizes under sanitizers";
    prepare(kMostStates);
    EXPECT_GT(touched(CALL(0, 0, sample = 0)), 0);
    const auto check = [](const Call &call) {
        call.run();  // the loader looks up the names, on this stack
        EXPECT_LE(touched(call) - touched(CALL(0, 0, sample = 0)), 1000 * call.kilobytes) << call.text;
    };
    std::ranges::for_each(kCalls, check);
    static Matrix *x = matrix_new(9, 9), *upper, *orthogonal;
    check(CALL(26, 60, householder(x, &upper, &orthogonal); matrix_delete(upper); matrix_delete(orthogonal)));
    matrix_delete(x);
}
