# The project's own C and C++ files, one a line, relative to the checkout.
# shellcheck shell=bash

list_sources() {
  (cd "$ROOT" && find bench host include sim src tests -type f \( -name '*.cpp' -o -name '*.h' -o -name '*.c' \) | sort)
}
