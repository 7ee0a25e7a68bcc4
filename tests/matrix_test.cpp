#include <gtest/gtest.h>
#include <mensura/matrix.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <sstream>
#include <string>

namespace {

using Owner = std::unique_ptr<Matrix, decltype([](Matrix *x) { matrix_delete(x); })>;
Owner matrix(int rows, int cols, auto element) {
    Owner x{matrix_new(rows, cols)};
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) x->v[i][j] = element(i, j);
    return x;
}
double zero(int, int) { return 0; }
double one(int i, int j) { return i == j; }
double sum(int i, int j) { return i + j; }

enum Kind { kSum, kSingular, kRegular, kPermutation, kTies, kEdge, kGraded, kHuge, kZeros, kInfinite, kNoise };
Owner sample(int kind, int m, int n) {
    std::mt19937_64 bits(static_cast<unsigned>(kind + 20 * m + 3000 * n));
    const double edges[] = {1e-10, std::nextafter(1e-10, 0), 0}, odd[] = {0.0, -0.0, HUGE_VAL, -HUGE_VAL, std::nan("")};
    return matrix(m, n, [&](int i, int j) {
        const double noise = std::uniform_real_distribution<double>(-1, 1)(bits);
        switch (kind) {
            case kSum: return sum(i, j);  // of rank 2
            case kSingular: return i != j ? 0.0 : i == n / 2 ? 0x1p-53 : 1;
            case kRegular: return i != j ? -0.0 : i == n / 2 ? -std::nextafter(0x1p-53, 1) : 1;
            case kPermutation: return (7 * i + 3) % n == j ? i % 3 - 3.5 : 0;
            case kTies: return static_cast<double>(bits() % 3) - 1;
            case kEdge: return i % 3 == j % 3 ? edges[bits() % 3] : 0;
            case kGraded: return std::ldexp(noise, -static_cast<int>(bits() % 70));
            case kHuge: return noise * 1e160;  // squares overflow
            case kZeros: return bits() % 3 == 0 ? odd[bits() % 2] : noise;
            case kInfinite: return bits() % static_cast<unsigned>(3 * n) == 0 ? odd[bits() % 5] : noise;
            default: return noise;
        }
    });
}

Owner transposed(const Owner &x) {
    return matrix(x->n, x->m, [&](int i, int j) { return x->v[j][i]; });
}
Owner product(const Owner &x, const Owner &y) { return Owner{matrix_mul(x.get(), y.get())}; }

// The largest element of x y - z.
double error(const Owner &x, const Owner &y, auto z) {
    const Owner xy = product(x, y);
    double largest = 0;
    for (int i = 0; i < xy->m; ++i)
        for (int j = 0; j < xy->n; ++j) largest = std::max(largest, std::fabs(xy->v[i][j] - z(i, j)));
    return largest;
}
double size(const Owner &x) { return error(x, matrix(x->n, x->n, one), zero); }
RMATRIX fixed(const Owner &x) { return x ? setRMATRIX1(x->v, x->m, x->n) : RMATRIX{}; }

// Elements of the same bits, or NaN both.
bool same(const RMATRIX &a, const RMATRIX &b) {
    const auto equal = [](double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0 || (x != x && y != y); };
    bool all = a.rows == b.rows && a.cols == b.cols;
    for (int i = 0; i < a.rows && a.cols > 0; ++i)
        all = all && std::equal(&a.data[100 * i], &a.data[100 * i + a.cols], &b.data[100 * i], equal);
    return all;
}
bool same(const Owner &a, const Owner &b) { return same(fixed(a), fixed(b)); }

// The result in its corner, or a failure that empties.
void expect(const Owner &result, auto operation, auto... operands) {
    RMATRIX out{{}, 5, 6};
    std::ranges::fill(out.data, 77);
    EXPECT_EQ(operation(operands..., &out), result ? &out : nullptr);
    EXPECT_TRUE(same(out, fixed(result)) && operation(operands..., nullptr) == nullptr);
    EXPECT_EQ(std::ranges::count(out.data, 77), 10000 - out.rows * out.cols);
}

Owner sums_in_order(const Owner &x, const Owner &y) {
    Owner sums = matrix(x->m, y->n, zero);
    for (int i = 0; i < x->m; ++i)
        for (int j = 0; j < y->n; ++j)
            for (int k = 0; k < x->n; ++k) sums->v[i][j] += x->v[i][k] * y->v[k][j];
    return sums;
}

TEST(Products, are_sums_in_order_bit_for_bit) {
    for (int m = 1; m <= 100; m += m == 17 ? 83 : 1)
        for (int n = 1; n <= 100; n += n == 17 ? 83 : 1)
            for (int inner = 0; inner <= 100; inner += inner == 17 ? 83 : 1) {
                const int kind = inner % 2 == 0 ? kInfinite : kZeros;
                const Owner x = sample(kind, m, inner), y = sample(kind, inner, n);
                EXPECT_TRUE(same(product(x, y), sums_in_order(x, y))) << m << " x " << inner << " x " << n;
                const RMATRIX a = fixed(x), b = fixed(y);
                expect(inner > 0 ? product(x, y) : nullptr, rmatrix_multi_ptr, &a, &b);
            }
    for (const int inner : {256, 257, 700})  // long sums are taken in parts
        for (const int n : {1, 3, 8, 13}) {
            const Owner x = sample(kNoise, 7, inner), y = sample(kNoise, inner, n);
            EXPECT_TRUE(same(product(x, y), sums_in_order(x, y))) << inner << " x " << n;
        }
}

// Gauss-Jordan elimination with complete pivoting, null if singular.  Element (k, l) is in row row[k], column col[l].
Owner plain_inverse(const Owner &x) {
    const int n = x->m;
    int row[100], col[100];
    for (int k = 0; k < n; ++k) row[k] = col[k] = k;
    const Owner b{matrix_copy(n, x->v, n)};
    const auto at = [&](int i, int j) -> double & { return b->v[row[i]][col[j]]; };
    for (int k = 0; k < n; ++k) {
        double best = 0;
        int r = k, c = k;
        for (int i = k; i < n; ++i)
            for (int j = k; j < n; ++j)
                if (std::fabs(at(i, j)) > best) best = std::fabs(at(r = i, c = j));
        if (best + 1.0 == 1.0) return nullptr;
        std::swap(row[k], row[r]);
        std::swap(col[k], col[c]);
        const double p = 1 / at(k, k);
        for (int j = 0; j < n; ++j) at(k, j) = j == k ? p : at(k, j) * p;
        for (int i = 0; i < n; ++i)
            if (const double factor = at(i, k); i != k)
                for (int j = 0; j < n; ++j) at(i, j) = j == k ? -p * factor : at(i, j) - factor * at(k, j);
    }
    Owner inverse = matrix(n, n, zero);
    for (int k = 0; k < n; ++k)
        for (int l = 0; l < n; ++l) inverse->v[col[k]][row[l]] = at(k, l);
    return inverse;
}

TEST(Inverse, has_the_bits_of_plain_elimination_and_undoes_its_matrix) {
    for (int n = 1; n <= 100; n += n == 40 ? 60 : 1)
        for (int kind = kSum; kind <= kNoise; ++kind) {
            const Owner x = sample(kind, n, n), inverse = plain_inverse(x);
            EXPECT_TRUE(kind == kSingular ? !inverse : inverse || (kind != kRegular && kind != kNoise));
            RMATRIX a = fixed(x);
            expect(inverse, rmatrix_inverse_ptr, &a);
            rmatrix_inverse_ptr(&a, &a);
            EXPECT_TRUE(same(a, fixed(inverse))) << n << ", kind " << kind;
            if (kind != kNoise) continue;
            const double tolerance = n * 0x1p-52 * size(x) * size(inverse);  // of n steps, or of sums of n products
            EXPECT_LE(std::max(error(x, inverse, one), error(inverse, x, one)), tolerance);
        }
}

TEST(FixedMatrix, operations_fill_their_corner_or_fail) {
    for (const int n : {1, 3, 7, 99}) {
        const Owner x = sample(kInfinite, n + 1, n), y = sample(kZeros, n + 1, n), identity = matrix(n, n + 1, one);
        const Owner packed = matrix(1, n * (n + 1), [&](int, int k) { return x->v[k / n][k % n]; });
        const RMATRIX a = fixed(x), b = fixed(y), t = fixed(transposed(x)), none{{}, 9, -1};
        RMATRIX c = a;
        initRMATRIX_identity(&c, n, n + 1);
        EXPECT_TRUE(same(c, fixed(identity)) && isEmptyRMATRIX(&none) && !isEmptyRMATRIX(&c));
        expect(x, setRMATRIX_ptr, packed->v[0], n + 1, n);
        expect(x, setRMATRIX1_ptr, x->v, n + 1, n);
        expect(matrix(n + 1, n, [&](int i, int j) { return x->v[i][j] + y->v[i][j]; }), rmatrix_add_ptr, &a, &b);
        expect(matrix(n + 1, n, [&](int i, int j) { return x->v[i][j] - y->v[i][j]; }), rmatrix_sub_ptr, &a, &b);
        expect(transposed(x), rmatrix_transpose_ptr, &a);
        for (const auto operation : {rmatrix_add_ptr, rmatrix_sub_ptr, rmatrix_multi_ptr}) {
            expect(nullptr, operation, nullptr, &a);
            expect(nullptr, operation, &a, nullptr);
            expect(nullptr, operation, &none, &none);
            expect(nullptr, operation, &a, operation == rmatrix_multi_ptr ? &a : &t);
        }
        for (const auto operation : {rmatrix_transpose_ptr, rmatrix_inverse_ptr}) expect(nullptr, operation, &none);
        expect(nullptr, rmatrix_inverse_ptr, &a);
        expect(nullptr, setRMATRIX_ptr, packed->v[0], 101, 1);
        expect(nullptr, setRMATRIX1_ptr, x->v, 0, 101);
    }
}

TEST(FixedMatrix, gives_vectors_and_text) {
    RMATRIX column = fixed(matrix(3, 1, sum)), square = fixed(matrix(2, 2, sum)), empty{{}, 2, -3};
    EXPECT_TRUE(rmatrix_to_vector(&column, nullptr) == column.data && column.data[1] == 1 && column.data[2] == 2);
    for (RMATRIX *const m : {&square, &empty, static_cast<RMATRIX *>(nullptr)})
        EXPECT_TRUE(!rmatrix_to_vector(m, nullptr) && !rmatrix_to_vector(m, column.data));
    testing::internal::CaptureStdout();
    rmatrix_printf(square);
    rmatrix_printf_ptr(&empty);
    const std::string rule = std::string(40, '=') + '\n', text = "0.000000, 1.000000, \n1.000000, 2.000000, \n";
    EXPECT_EQ(testing::internal::GetCapturedStdout(), rule + "row=2, col=2\n" + text + rule + "matrix is empty\n");
}

TEST(HeapMatrix, has_the_formulas_of_its_parts_at_any_size) {
    for (int m = -1; m <= 6; ++m)
        for (int n = -1; n <= 6; ++n) {
            const Owner x = sample(kZeros, m, n), copy{matrix_copy(n, x->v, m)};
            EXPECT_TRUE(copy->m == std::max(m, 0) && copy->n == std::max(n, 0) && same(copy, x));
            matrix_transpose(copy.get());
            if (m > 0) mcol(x.get(), copy->v[0], n);  // no such column
            const auto turned = [&](int i, int j) { return m <= n && j < m ? x->v[j][i] : x->v[i][j]; };
            EXPECT_TRUE(same(copy, matrix(m, n, turned)) && (x->m == x->n || !product(x, x)) && vnorm({}, -1) == 0);
            for (int d = -1; d <= 8; ++d) {
                const auto element = [&](int i, int j) { return std::min(i, j) < d ? one(i, j) : x->v[i][j]; };
                EXPECT_TRUE(same(Owner{matrix_minor(x.get(), d)}, matrix(m, n, element)));
            }
        }
}

std::pair<Owner, Owner> decompose(const Owner &x) {
    Matrix *r = x.get(), *q = r;
    householder(x.get(), &r, &q);
    return {Owner{q}, Owner{r}};
}

std::pair<Owner, Owner> plain_decompose(const Owner &x) {
    const int m = x->m;
    Owner z{matrix_copy(x->n, x->v, m)}, q = matrix(m, m, one), r{matrix_copy(x->n, x->v, m)};
    for (int k = 0; k < std::min(x->n, m - 1); ++k) {
        z.reset(matrix_minor(z.get(), k));
        const Owner work = matrix(2, m, [&](int i, int j) { return i == 0 ? z->v[j][k] : j == k; });
        double *const column = work->v[0], *const v = work->v[1], norm = vnorm(column, m);
        vmadd(column, v, x->v[k][k] > 0 ? -norm : norm, v, m);
        const auto *tiny = std::find_if(column, column + m, [](double c) { return std::fabs(c) < 1e-10; });
        if (const double length = vnorm(v, m); length >= 1e-10)
            vdiv(v, length, v, m);
        else if (tiny != column + m)
            for (int i = 0; i < m; ++i) v[i] = column + i == tiny;
        Owner h{vmul(v, m)};
        z = product(h, z);
        q = k == 0 ? std::move(h) : product(h, q);
        r = product(q, x);
    }
    return {transposed(q), std::move(r)};
}

TEST(Householder, has_the_bits_of_plain_steps_and_its_laws) {
    for (const auto &[m, n] : {std::pair{0, 3}, {4, 0}, {1, 4}, {2, 1}, {2, 9}, {9, 4}, {8, 13}, {40, 21}, {100, 84}})
        for (int kind = kSum; kind <= kNoise; ++kind) {
            const Owner x = sample(kind, m, n), identity = matrix(n, n, one);
            const auto [q, r] = decompose(x);
            const auto [plain_q, plain_r] = plain_decompose(x);
            EXPECT_TRUE(same(q, plain_q) && same(r, plain_r)) << m << " x " << n << ", kind " << kind;
            if (kind == kEdge || kind == kGraded || kind == kHuge || kind == kInfinite) continue;
            const double tolerance = 2 * (m + 1) * 0x1p-52, scaled = tolerance * size(x);  // a column may cancel
            EXPECT_LE(error(q, transposed(q), one), tolerance);
            EXPECT_LE(error(q, r, [&x](int i, int j) { return x->v[i][j]; }), scaled);
            EXPECT_LE(error(r, identity, [&r = r](int i, int j) { return i > j ? 0 : r->v[i][j]; }), 9 * scaled);
        }
}

TEST(DataQR, holds_the_matrix_shown_last) {
    const auto home = std::filesystem::current_path();
    const auto dir = std::filesystem::temp_directory_path() / ("mensura" + std::to_string(std::random_device{}()));
    std::filesystem::create_directory(dir);
    std::filesystem::current_path(dir);
    const auto contents = [] { return (std::ostringstream{} << std::ifstream("dataQR.txt").rdbuf()).str(); };
    testing::internal::CaptureStdout();
    EXPECT_EQ(QRtest(), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Q\nR\nQ * R\n");
    const std::string shown = contents(), end(20, '\n');
    const auto [q, r] = decompose(matrix(168, 84, sum));
    EXPECT_TRUE(matrix_show(product(q, r).get()) == 0 && contents() == shown);
    EXPECT_LE(error(q, r, sum), 2 * 169 * 0x1p-52 * 250);  // as above
    EXPECT_TRUE(matrix_show(matrix(1, 2, sum).get()) == 0 &&
                contents() == "0.000000000000000,1.000000000000000,\n" + end);
    std::filesystem::remove("dataQR.txt");
    std::filesystem::create_directory("dataQR.txt");  // which cannot be opened, not even by root
    EXPECT_TRUE(matrix_show(q.get()) == EOF && QRtest() == 0);
    std::filesystem::current_path(home);
    std::filesystem::remove_all(dir);
}

}  // namespace
