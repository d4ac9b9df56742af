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

/// Runs qorfx with `arguments` (already shell-quoted where needed); `prefix` comes before
/// the program in the shell command ("timeout 20 ", "VAR=x ").
/// In the sanitized build, LeakSanitizer's tracer now and then crashes at the tool's exit,
/// reading a thread's dynamic TLS ("Tracer caught signal 11", then "LeakSanitizer has
/// encountered a fatal error"): such a run says nothing of the tool, so it runs once more.
inline QorfxResult RunQorfx(const std::string& arguments, const std::string& prefix = "")
{
    QorTempDir capture;
    const std::string command = prefix + QORFX_PATH + " " + arguments + " >" + capture.File("out") + " 2>" +
                                capture.File("err");
    QorfxResult result;
    for (int run = 0; run < 2; ++run) {
        const int status = std::system(command.c_str());
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.out = QorReadFile(capture.File("out"));
        result.err = QorReadFile(capture.File("err"));
        if (result.err.find("LeakSanitizer has encountered a fatal error") == std::string::npos)
            break;
    }
    return result;
}

/// An effect of the tool's tests, under tests/data/qorfx.
inline std::string QorfxData(const char* name)
{
    return std::string(QOR_TEST_DATA_DIR) + "/qorfx/" + name;
}

/// A prefix for RunQorfx that runs the tool as on a full disk: no file may grow past
/// 1024 bytes, and the signal for passing that limit is ignored, so writes just fail.
inline std::string QorfxFullDisk()
{
    return "trap '' XFSZ; ulimit -f 2; exec ";
}

inline std::string QorfxSample(const char* relative)
{
    return std::string(QOR_SAMPLES_DIR) + "/" + relative;
}
