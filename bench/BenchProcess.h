#pragma once
// Starting other programs from a benchmark: the program under test, `cp` for comparison.
#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

#include <chrono>
#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace benchproc {

using Clock = std::chrono::steady_clock;

// Starts a program (searched on PATH) with the given arguments and extra environment entries
// ("NAME=value"); returns its pid, or -1.
inline pid_t Spawn(const QList<QByteArray> &args, const QList<QByteArray> &extraEnv = {}) {
    std::vector<char *> argv;
    for (const QByteArray &a : args) {
        argv.push_back(const_cast<char *>(a.constData()));
    }
    argv.push_back(nullptr);
    std::vector<char *> envp;
    for (const QByteArray &e : extraEnv) {
        envp.push_back(const_cast<char *>(e.constData()));
    }
    for (char **e = environ; *e; ++e) {
        const QByteArray entry(*e);
        bool replaced = false;
        for (const QByteArray &x : extraEnv) {
            replaced = replaced || entry.startsWith(x.left(x.indexOf('=') + 1));
        }
        if (!replaced) {
            envp.push_back(*e);
        }
    }
    envp.push_back(nullptr);
    pid_t pid = -1;
    if (posix_spawnp(&pid, argv[0], nullptr, nullptr, argv.data(), envp.data()) != 0) {
        return -1;
    }
    return pid;
}

// Waits for the program and returns whether it exited with status 0.
inline bool Wait(pid_t pid) {
    int status = 0;
    return waitpid(pid, &status, 0) == pid && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Runs a program to its end; whether it succeeded.
inline bool Run(const QList<QByteArray> &args) {
    const pid_t pid = Spawn(args);
    return pid > 0 && Wait(pid);
}

// A line of /proc/<pid>/status ("VmHWM", "VmRSS"), in kB; -1 when not found.
inline long StatusKb(pid_t pid, const char *field) {
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly)) {
        return -1;
    }
    const QByteArray prefix = QByteArray(field) + ':';
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(prefix)) {
            return line.mid(prefix.size()).trimmed().split(' ').first().toLong();
        }
    }
    return -1;
}

// The CPU time the process has used so far (user + system, all threads), in clock ticks.
inline long CpuTicks(pid_t pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) {
        return -1;
    }
    const QByteArray line = stat.readAll();
    // The fields after the command name, which is in parentheses and may hold blanks.
    const QList<QByteArray> f = line.mid(line.lastIndexOf(')') + 2).split(' ');
    // utime and stime are fields 14 and 15 of the line, 12 and 13 here.
    return f.size() > 13 ? f[11].toLong() + f[12].toLong() : -1;
}

inline double TicksToSeconds(long ticks) {
    return double(ticks) / double(sysconf(_SC_CLK_TCK));
}

inline double Seconds(Clock::time_point from, Clock::time_point to) {
    return std::chrono::duration<double>(to - from).count();
}

} // namespace benchproc
