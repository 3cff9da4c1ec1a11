// Runs gnuplot, a program of its own, which need not be there before a picture is asked for.
#pragma once

#include <string>

namespace replay {

// Runs the script and returns what it draws on gnuplot's standard output; gnuplot's own messages go to standard error.
// Throws StreamError when gnuplot is not there or reports an error.
std::string runGnuplot(const std::string& script);

}  // namespace replay
