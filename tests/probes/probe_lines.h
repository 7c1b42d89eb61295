// A probe and its test talk in lines, on the probe's standard streams. Main thread only.
#pragma once

#include <unistd.h>

#include <QCoreApplication>
#include <QSocketNotifier>
#include <array>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>

namespace tollvane::test {

inline void say(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

// Passes on each line of the standard input. Ends the application when the input ends.
class ProbeLines {
 public:
  explicit ProbeLines(std::function<void(const std::string& line)> obey) : obey_(std::move(obey)) {
    QObject::connect(&input_, &QSocketNotifier::activated, &input_, [this] { read(); });
  }

 private:
  void read() {
    std::array<char, 4096> buffer;
    const ssize_t count = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (count <= 0) return QCoreApplication::quit();
    received_.append(buffer.data(), static_cast<std::size_t>(count));
    for (std::size_t end = 0; (end = received_.find('\n')) != std::string::npos;) {
      const std::string line = received_.substr(0, end);
      received_.erase(0, end + 1);
      obey_(line);
    }
  }

  std::function<void(const std::string&)> obey_;
  std::string received_;
  QSocketNotifier input_{STDIN_FILENO, QSocketNotifier::Read};
};

}  // namespace tollvane::test
