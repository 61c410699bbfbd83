// side_by_side ROUNDS COMMAND OTHER: runs two whole processes by turns and prints the median wall
// time of either in milliseconds, the ratio of these times, and the largest peak memory of either
// in kilobytes, as cells of a table.
//
// A command is "INPUT PROGRAM ARGUMENT...", words apart by blanks; the process reads INPUT and
// writes to /dev/null. An @ in a word stands for the number of the round, from 1.

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Measured {
    std::vector<double> milliseconds;
    long kilobytes = 0;
};

std::vector<std::string> words_of(const std::string& command, int round) {
    std::vector<std::string> words;
    std::istringstream text(command);
    for (std::string word; text >> word;) {
        const auto at = word.find('@');
        if (at != std::string::npos) word.replace(at, 1, std::to_string(round));
        words.push_back(word);
    }
    return words;
}

[[noreturn]] void become(const std::vector<std::string>& words) {
    std::vector<char*> arguments;
    for (std::size_t i = 1; i < words.size(); ++i) {
        arguments.push_back(const_cast<char*>(words[i].c_str()));
    }
    arguments.push_back(nullptr);
    const int in = ::open(words[0].c_str(), O_RDONLY);
    const int out = ::open("/dev/null", O_WRONLY);
    if (in >= 0 && ::dup2(in, STDIN_FILENO) >= 0 && ::dup2(out, STDOUT_FILENO) >= 0) {
        ::execv(arguments[0], arguments.data());
    }
    std::perror(words[0].c_str());
    std::_Exit(127);
}

void measure(const std::vector<std::string>& words, Measured& measured) {
    using std::chrono::steady_clock;
    const auto start = steady_clock::now();
    // A copy of this small process, not vfork: the peak of a big parent would count as the child's.
    const pid_t child = ::fork();
    if (child == 0) become(words);
    int status = 0;
    rusage usage{};
    if (child < 0 || ::wait4(child, &status, 0, &usage) != child || status != 0) {
        std::fprintf(stderr, "side_by_side: %s failed\n", words[1].c_str());
        std::exit(1);
    }
    const std::chrono::duration<double, std::milli> elapsed = steady_clock::now() - start;
    measured.milliseconds.push_back(elapsed.count());
    measured.kilobytes = std::max(measured.kilobytes, usage.ru_maxrss);
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace

int main(int argc, char** argv) {
    const int rounds = argc > 2 ? std::atoi(argv[1]) : 0;
    if (rounds < 1 || argc != 4) {
        std::fputs("usage: side_by_side ROUNDS COMMAND OTHER\n", stderr);
        return 2;
    }
    std::array<Measured, 2> measured;
    for (int round = 1; round <= rounds; ++round) {
        for (std::size_t i = 0; i < measured.size(); ++i) {
            measure(words_of(argv[i + 2], round), measured[i]);
        }
    }
    const double ms = median(measured[0].milliseconds);
    const double other = median(measured[1].milliseconds);
    std::printf("%.2f | %.2f | %.2f | %ld | %ld", ms, other, ms / other, measured[0].kilobytes,
                measured[1].kilobytes);
}
