#!/usr/bin/env bash
# coverage_table_test.sh TOP: what is made of gcovr's report.
. "${0%/*}/../support/common.sh"

# A line of two branches in two instances of a template, lines never reached, one that is no code.
cat >report.json <<'END'
{"files": [
    {"file": "host/a.cpp", "lines": [
        {"line_number": 3, "count": 2, "branches": [{"count": 2}, {"count": 0}]},
        {"line_number": 3, "count": 1, "branches": [{"count": 0}, {"count": 1}]},
        {"line_number": 4, "count": 5, "branches": [{"count": 5}, {"count": 0}]},
        {"line_number": 5, "count": 0, "branches": [{"count": 0}, {"count": 0}]},
        {"line_number": 6, "count": 0, "branches": []},
        {"line_number": 7, "count": 0, "branches": [], "gcovr/noncode": true}]},
    {"file": "sql/b.cpp", "lines": [{"line_number": 1, "count": 1}]}]}
END
same "the table" "folder         lines  reached  never  percent  branches   taken  never  percent
host               4        2      2    50.0%         6       3      3    50.0%
sql                1        1      0   100.0%         0       0      0     0.0%
all                5        3      2    60.0%         6       3      3    50.0%

Never reached:
  host/a.cpp: 5-6

Reached, with a branch that was never taken:
  host/a.cpp: 4" "$(python3 -B "$1/scripts/coverage_table.py" report.json)"
