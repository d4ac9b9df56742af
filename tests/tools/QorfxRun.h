/// @file
/// Runs the built qorfx binary and collects its exit code and output.
#pragma once

#include "QorTestSupport.h"

#include <cstdlib>
#include <string>
#include <sys/wait.h>

struct QorfxResult
{
    int exitCode = -1;
    std::string out; ///< standard output
    std::string err; ///< standard error
};

/// Runs qorfx with `arguments` (already shell-quoted where needed).
inline QorfxResult RunQorfx(const std::string& arguments)
{
    QorTempDir capture;
    const std::string command = std::string(QORFX_PATH) + " " + arguments + " >" + capture.File("out") + " 2>" +
                                capture.File("err");
    QorfxResult result;
    const int status = std::system(command.c_str());
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.out = QorReadFile(capture.File("out"));
    result.err = QorReadFile(capture.File("err"));
    return result;
}

/// An effect of the tool's tests, under tests/data/qorfx.
inline std::string QorfxData(const char* name)
{
    return std::string(QOR_TEST_DATA_DIR) + "/qorfx/" + name;
}

inline std::string QorfxSample(const char* relative)
{
    return std::string(QOR_SAMPLES_DIR) + "/" + relative;
}
