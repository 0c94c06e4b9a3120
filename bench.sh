#!/usr/bin/env bash
# Measures how fast the driver is, side by side with the bare Firebird client and with what one would take instead.
#
#   ./bench.sh                              everything, in about three quarters of an hour
#   ./bench.sh --quick                      smaller sizes, fewer runs
#   ./bench.sh --only select --runs 5       one benchmark (--help lists them), another number of runs
#   ./bench.sh --against e114518~1         an earlier commit's tool as well, on the matrix
#   ./bench.sh --json FILE                  the figures of every run as well
#   ./bench.sh --doc docs/performance.md    the table and its pictures into the document
set -euo pipefail
cd "$(dirname "$0")"
. scripts/packages.sh

packages=("${build_packages[@]}" "${bench_packages[@]}")
command -v npm >/dev/null || packages+=(nodejs npm)
ensure_packages "${packages[@]}"
if [ ! -d bench/peers/node/node_modules/node-firebird ]; then
    npm --prefix bench/peers/node ci --no-audit --no-fund --loglevel=error
fi
build bench --target bench_programs
exec /usr/bin/python3 -B bench/run.py --programs build/bench/bench "$@"
