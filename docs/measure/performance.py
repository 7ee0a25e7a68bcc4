"""What bench/performance.py measured last."""

import benchmarks


def names(_library):
    results = benchmarks.load()
    return {**results["conditions"], "tables": benchmarks.tables(results), "growth": benchmarks.growth()}
