#pragma once
// Runs a piece of a test in a forked child and hands back what it returns and how it ended:
// the way to test singletons that are built once per process, and code that calls exit().

#include <functional>
#include <string>

namespace zuvtest {

struct ChildResult {
    std::string text;     // what the function returned
    int exitStatus = -1;  // 0 when the function returned; else the child's own exit status
};

ChildResult inChild(const std::function<std::string()>& body);

}  // namespace zuvtest
