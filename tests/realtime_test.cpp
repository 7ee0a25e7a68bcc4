// Real-time manners: what a control loop calls for every sample or update takes no memory, asks nothing of the system
// and stays on a small stack.  That it takes no lock is seen from outside: abi/imports.sh.

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

namespace {

constexpr int kChannels = 10, kStates = 99, kNoFilter = 77;

TIIRFilterBank bank;
CentralDiffOnline slopes[kChannels];
AmplitudeLimitOnline limits[kChannels];
LimitAverageOnline limited[kChannels];
MovingAverageBank averages;
KalmanFilter kf;
RMATRIX a, b, c;
Matrix *square, *r, *q;
CplxD u, v, roots[9];
double x, tame, samples[kStates], out[kStates], model[5][kStates * kStates], *rows[kStates];
int found, n;  // states, a third of them measured

int grow(double, const double *y, void *, double *dydt) { return dydt[0] = 0.1 * y[0], 0; }

void prepare(int states) {
    n = states;
    initTIIRFilters(&bank, ptNotch, kChannels, 60.0, 360.0);
    init_central_difference_onlines(slopes, kChannels, 0.01);
    init_amlitude_limit_filer_onlines(limits, kChannels, 0.5);
    init_amlitude_limit_move_average_filter_onlines(limited, 16, kChannels, 0.5);
    init_move_average_filter_onlines(&averages, 16, kChannels);
    initKalmanFilter_d(&kf, getKalmanFilterA(model[0], n, 0.01), getKalmanFilterC(model[1], n / 3),
                       getKalmanFilterQ(model[2], n, 1e-4, 0, 0, 1e-2, 0, 1), getKalmanFilterR(model[3], n / 3, 0.25),
                       getKalmanFilterP(model[4], n, 1.0), nullptr, n / 3, n);
    for (int i = 0; i < n; ++i) rows[i] = model[0] + i * n;
    initRMATRIX_identity(&a, n, n);
}

struct Call {
    int kilobytes;  // of stack at most: what the headers say, or 4
    const char *text;
    void (*run)();
};
#ifdef NDEBUG
constexpr bool kOptimised = true;
#else
constexpr bool kOptimised = false;
#endif
#ifdef __x86_64__
constexpr bool kX86_64 = true;
#else
constexpr bool kX86_64 = false;
#endif
Call make(int optimised, int plain, const char *text, void (*run)()) {
    return {kOptimised ? optimised : plain, text, run};
}
#define CALL(optimised, plain, ...) make(optimised, plain, #__VA_ARGS__, [] { __VA_ARGS__; })

const Call kCalls[] = {
    CALL(4, 4, u = CplxDPow(CplxDConj(getCplxD(x, 0.5)), x); v = CplxDSub(CplxDMult_coef(u, x), CplxDMult(u, v))),
    CALL(4, 4, v = CplxDDivision(CplxDAdd(CplxDSin(u), CplxDTan(v)), CplxDCos(v)); u.re = CplxDCabs(v)),
    CALL(4, 4, out[0] = IIRFilter(bank.Filters, x) + SingleFreqDFT(samples, n, x) + Goertzel(samples, n, x)),
    CALL(4, 10, IIRFilters(&bank, samples, out)),
    CALL(4, 10, out[0] = SectCalc(x, 1, 0, bank.Filters->Coeffs)),
    CALL(11, 35, FilterWithIIR(samples, out, n, bank.Filters->Coeffs)),
    CALL(32, 32, bank.Filters->Coeffs = CalcIIRFilterCoeff({ptNotch, x, 0.1, 0, {pfInverseChebyshev, 15, 0.1, 60, 0}})),
    CALL(4, 4, out[0] = central_difference_online(slopes, x); out[1] = amlitude_limit_filer_online(limits, x)),
    CALL(4, 4, move_average_filter_online(averages.Filters, x); amlitude_limit_move_average_filter_online(limited, x)),
    CALL(4, 4, central_difference_onlines(slopes, samples, out, 9); amlitude_limit_filer_onlines(limits, out, out, 9)),
    CALL(4, 4, move_average_filter_onlines(&averages, samples, out)),
    CALL(4, 4, amlitude_limit_move_average_filter_onlines(limited, samples, out, kChannels)),
    CALL(4, 4, setRMATRIX1_ptr(rows, n, n, &b); rmatrix_add_ptr(&a, setRMATRIX_ptr(model[0], n, n, &c), &c)),
    CALL(4, 4, copyRMATRIX(rmatrix_transpose_ptr(&a, &b), &c); rmatrix_to_vector(rmatrix_sub_ptr(&a, &b, &c), out)),
    CALL(4, 35, rmatrix_multi_ptr(&a, &a, &c); getKalmanFilter_out_d(&kf, getKalmanFilter_state_d(&kf, out))),
    CALL(101, 110, rmatrix_inverse_ptr(&a, &c)),
    CALL(261, 440, c = rmatrix_multi(a, a)),
    CALL(261, 440, c = rmatrix_inverse(a)),
    CALL(101, 110, KalmanFilter_update(&kf, setRMATRIX_ptr(samples, n / 3, 1, &b)); KalmanFilter_update1(&kf, &b, &a)),
    CALL(101, 110, KalmanFilter_update_d(&kf, samples, out); KalmanFilter_update1_d1(&kf, samples, rows, out)),
    CALL(101, 110, KalmanFilter_update1_d(&kf, samples, getKalmanFilterA(model[0], n, x), out)),
    CALL(21, 24, found = FindRoots(9, samples, roots)),
    CALL(4, 35, IIRFilterZeroPhase(bank.Filters, samples, out, n); cubicSmooth7(samples, out, n)),
    CALL(4, 4, rkf45(0, 0.01, 1, 1e-6, grow, &tame, 1, nullptr, out);
         rkf452(0, 0.01, 100, grow, &tame, 1, nullptr, out)),
};

// Ordinary samples first, then all that a broken sensor may send.
void run_often(const Call &call, int times) {
    constexpr double kOdd[] = {0.2, NAN, -HUGE_VAL, 0.0, 1.7e308, -0.3, HUGE_VAL, -1.7e308, 5e-324, 0.1};
    for (int i = 0; i < times; ++i) {
        x = a.data[1] = i < times / 2 ? 0.4 * std::sin(i) : kOdd[i % 10];
        tame = std::abs(x) < 1 ? x : NAN;  // beyond 1e15 an integrator prints a line
        std::ranges::fill(samples, x);
        resetKalmanFilter(&kf);  // a NaN has emptied it
        call.run();
    }
}

// The exit code of a process that may do nothing but end, and is killed at any other system call; 1 if it allocates.
int confined(const Call &call) {
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

TEST(RealTime, calls_take_no_memory_and_ask_nothing_of_the_system) {
    if (SANITIZED) GTEST_SKIP() << "a sanitizer does both";
    prepare(9);
    if (confined(CALL(0, 0, x = 0)) == kNoFilter) GTEST_SKIP() << "system calls cannot be filtered here";
    EXPECT_EQ(confined(CALL(0, 0, getppid())), -SIGSYS);
    EXPECT_EQ(confined(CALL(0, 0, matrix_delete(matrix_new(1, 1)))), 1);
    for (const Call &call : kCalls) EXPECT_EQ(confined(call), 0) << call.text;
}

// Bytes of its stack that a thread has written to.
std::ptrdiff_t touched(Call call) {
    static unsigned char stack[1 << 20];
    std::ranges::fill(stack, 0xA5);
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    EXPECT_EQ(pthread_attr_setstack(&attributes, stack, sizeof stack), 0);
    pthread_t thread;
    const auto run = [](void *what) -> void * { return run_often(*static_cast<Call *>(what), 10), nullptr; };
    EXPECT_EQ(pthread_create(&thread, &attributes, run, &call), 0);
    pthread_join(thread, nullptr);
    return std::end(stack) - std::ranges::find_if(stack, [](int byte) { return byte != 0xA5; });
}

TEST(RealTime, calls_stay_on_the_stack_that_the_headers_name) {
    if (SANITIZED || !kX86_64) GTEST_SKIP() << "frames have other sizes under sanitizers and on other processors";
    prepare(kStates);
    EXPECT_GT(touched(CALL(0, 0, x = 0)), 0);
    const auto check = [](const Call &call) {
        call.run();  // the loader looks up the names, on this stack
        EXPECT_LE(touched(call) - touched(CALL(0, 0, x = 0)), 1000 * call.kilobytes) << call.text;
    };
    std::ranges::for_each(kCalls, check);
    square = matrix_new(9, 9);
    check(CALL(26, 60, householder(square, &r, &q); matrix_delete(r); matrix_delete(q)));
    matrix_delete(square);
}

}  // namespace
