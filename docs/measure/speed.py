"""The table of the speed in README.md: some rows of docs/performance.md."""

import benchmarks

CHOSEN = {  # as the table names them
    "IIRFilter_against_loop_over_records": "`IIRFilter`, 3 sections, per sample",
    "IIRFilter_against_loop_over_arrays": "the same",
    "FilterWithIIR_against_sosfilt": "`FilterWithIIR`, 3 sections, per sample",
    "Default_design_against_liquid": "",
    "FFT_against_FFTW/1024": "",
    "FFT_against_FFTW/1048576": "",
    "DFT_against_loop/1000": "",
    "FindRoots_against_gsl/20": "`FindRoots`, random, degree 20",
    "rmatrix_multi_ptr_against_OpenBLAS": "",
    "KalmanFilter_update_against_Eigen": "",
    "householder_of_noise_against_textbook": "",
    "cubicSmooth7_against_memcpy": "",
    "rkf45_quiet_against_gsl": "",
    "mensura_filter_time": "",
}


def table():
    described = {name: row for rows in benchmarks.SECTIONS.values() for name, row in rows.items()}
    results = benchmarks.load()["benchmarks"]
    for name, label in CHOSEN.items():
        row, found = described[name], results[name]
        ours, peer = (benchmarks.quantity(found[side], found["unit"]) for side in ("ours", "peer"))
        yield label or row.what, ours, f"{peer}, {row.peer}", f"{benchmarks.ratio(found):g}"


def names(_library):
    return {"speed": list(table())}
