#include "suite/worker.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <veldt20/memory.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "suite/allocator_in_use.h"

namespace veldt::bench {

namespace {

[[noreturn]] void Fail(const std::string& what) {
    std::fprintf(stderr, "veldt-bench: %s\n", what.c_str());
    std::exit(2);
}

/// Both ends are closed in every process started, but for what is handed to it.
void OpenPipe(int (&ends)[2]) {
    if (pipe2(ends, O_CLOEXEC) != 0) Fail("no pipe to be had");
}

std::vector<char*> EnvironmentWith(std::string& preload) {
    std::vector<char*> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (std::strncmp(*variable, "LD_PRELOAD=", 11) != 0) variables.push_back(*variable);
    }
    if (!preload.empty()) {
        preload.insert(0, "LD_PRELOAD=");
        variables.push_back(preload.data());
    }
    variables.push_back(nullptr);
    return variables;
}

int Spawn(const std::string& program, std::vector<std::string> arguments, std::string preload,
          int input, int output) {
    std::vector<char*> pointers;
    for (std::string& argument : arguments) {
        pointers.push_back(argument.data());
    }
    pointers.push_back(nullptr);
    std::vector<char*> environment = EnvironmentWith(preload);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    pid_t process = -1;
    const int error = posix_spawn(&process, program.c_str(), &actions, nullptr, pointers.data(),
                                  environment.data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) Fail(program + ": " + std::strerror(error));
    return process;
}

}  // namespace

int RunAsWorker(const Task& task) {
    const std::vector<Section> sections = AllSections();
    const Row& row = sections.at(task.section).rows.at(task.row);
    if (XMemInitInstance() == 0) Fail("the system has no memory for a heap");
    const Round round = row.ways.at(std::min(task.contestant, row.ways.size() - 1))();
    std::printf("%s\n", AllocatorInUse().c_str());
    std::fflush(stdout);
    for (char request = 0; read(STDIN_FILENO, &request, 1) == 1;) {
        std::printf("%.17g\n", round());
        std::fflush(stdout);
    }
    // What the setup made isn't taken down: the process ends.
    std::_Exit(0);
}

Worker::Worker(const std::string& program, const Task& task, const std::string& preload)
    : program_(program) {
    int requests[2];
    int answers[2];
    OpenPipe(requests);
    OpenPipe(answers);
    process_ = Spawn(program,
                     {program, "--worker", std::to_string(task.section), std::to_string(task.row),
                      std::to_string(task.contestant)},
                     preload, requests[0], answers[1]);
    close(requests[0]);
    close(answers[1]);
    requests_ = requests[1];
    answers_ = answers[0];
    allocator_ = ReadLine();
}

Worker::~Worker() {
    close(requests_);
    close(answers_);
    waitpid(process_, nullptr, 0);
}

double Worker::RunRound() {
    const char request = 1;
    if (write(requests_, &request, 1) != 1) Fail("a worker has gone");
    return std::strtod(ReadLine().c_str(), nullptr);
}

std::string Worker::ReadLine() {
    std::string line;
    for (char c = 0; read(answers_, &c, 1) == 1 && c != '\n';) {
        line += c;
    }
    if (line.empty()) Fail("a worker of " + program_ + " failed");
    return line;
}

}  // namespace veldt::bench
