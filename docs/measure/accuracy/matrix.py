"""Inverse and QR decomposition by condition number."""

import ctypes

import numpy as np
from binding import RMATRIX, Matrix

from .report import EPS, LD, noise, rms

CONDITIONS = (1e0, 1e2, 1e6, 1e10, 1e14)


def random_matrix(seed, rows, cols, condition):
    """Random orthogonal factors around singular values from 1 down to 1 / condition, evenly in their logarithm."""
    rng = np.random.default_rng(seed)
    u, v = (np.linalg.qr(rng.standard_normal((n, n)))[0] for n in (rows, cols))
    return np.ascontiguousarray((u[:, :cols] * np.geomspace(1, 1 / condition, cols)) @ v)


def norm(a):
    return rms(a) * np.sqrt(a.size)


def inverse(lib, a):
    given, out = RMATRIX(), RMATRIX()
    lib.setRMATRIX_ptr(a, *a.shape, given)
    return np.array(out.to_rows()) if lib.rmatrix_inverse_ptr(given, out) else None


def exact_inverse(a):
    """Newton's iteration in long double: right to about condition times 1e-19, 2000 times better than a double's."""
    a, x = a.astype(LD), np.linalg.inv(a).astype(LD)
    for _ in range(8):
        x = x + x @ (np.eye(len(a), dtype=LD) - a @ x)
    return x


def inverses(lib):
    for n in (3, 9, 30, 100):
        for condition in CONDITIONS:
            row = [n, f"{condition:.0e}"]
            matrices = [random_matrix(seed, n, n, condition) for seed in range(5 if n < 100 else 2)]
            truths = [exact_inverse(a) for a in matrices]
            for call in (lambda a: inverse(lib, a), np.linalg.inv):
                xs = [call(a) for a in matrices]
                row.append(max(norm(a.astype(LD) @ x - np.eye(n)) for a, x in zip(matrices, xs)))
                row.append(max(norm(x - t) / norm(t) for x, t in zip(xs, truths)) / (condition * EPS))
            yield [*row[:3], f"{row[3]:.2f}", row[4], f"{row[5]:.2f}"]


def householder(lib, a):
    x, r, q = lib.matrix_new(*a.shape), ctypes.POINTER(Matrix)(), ctypes.POINTER(Matrix)()
    for i, row in enumerate(a):
        np.ctypeslib.as_array(x.contents.v[i], row.shape)[:] = row
    lib.householder(x, r, q)
    out = [np.array([m.contents.v[i][: m.contents.n] for i in range(m.contents.m)]) for m in (q, r)]
    for m in (x, r, q):
        lib.matrix_delete(m)
    return out


def decompositions(lib):
    sizes = ((3, 3), (9, 9), (30, 30), (100, 100), (100, 40))
    cases = [(f"{n} x {m}", f"{c:.0e}", random_matrix(1, n, m, c)) for n, m in sizes for c in CONDITIONS]
    cases.append(("30 x 30", "I + noise of 1e-6", np.eye(30) + 1e-6 * noise(13, 900).reshape(30, 30)))
    for size, condition, a in cases:
        row, below = [size, condition], []
        for q, r in (householder(lib, a), np.linalg.qr(a, "complete")):
            wide = q.astype(LD)
            row += [norm(wide @ r - a) / norm(a), norm(wide.T @ wide - np.eye(len(a)))]
            below.append(np.max(abs(np.tril(r, -1))) / norm(a))
        yield [*row[:4], below[0], *row[4:]]
