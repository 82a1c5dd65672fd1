// This test program again, in processes of its own: each runs one test, which reads from the environment that
// it is one of them.
#pragma once

#include <string>
#include <vector>

namespace tsql::test {

// What `RunAgain` has told this process; empty when it is the first one.
std::string GivenRole();

// Runs the test of that full name in one process for each role, all at the same time, and waits for them.
// Returns their exit codes: 0 when the test has passed there.
std::vector<int> RunAgain(const std::string& test, const std::vector<std::string>& roles);

} // namespace tsql::test
