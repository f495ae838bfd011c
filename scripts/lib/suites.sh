# The suites of scripts/test. Each is a function suite_NAME RESULT that writes "PASSED FAILED" to the file RESULT.
# shellcheck shell=bash
