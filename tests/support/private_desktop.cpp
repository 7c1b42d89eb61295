#include "tests/support/private_desktop.h"

#include <set>
#include <sstream>
#include <stdexcept>

namespace tollvane::test {
namespace {

std::string name(PrivateDesktop::Tone tone) { return tone == PrivateDesktop::Tone::dark ? "dark" : "light"; }

std::vector<std::string> sessionOptions(const PrivateDesktop::Options& options) {
  std::vector<std::string> words{"--tone", name(options.tone)};
  if (options.screen) words.insert(words.end(), {"--screen", options.size, "--window-manager", "openbox"});
  if (options.panel) words.insert(words.end(), {"--panel", "xfce4"});
  return words;
}

}  // namespace

PrivateDesktop::PrivateDesktop(Options options)
    : hasScreen_(options.screen), hasPanel_(options.panel), tone_(options.tone), session_(sessionOptions(options)) {}

void PrivateDesktop::renew() {
  session_.renew();
  if (!hasScreen_) return;
  if (!waitUntil([this] { return isTidy(); }, desktopPatience))
    throw std::runtime_error("windows or status items of the test before stay");
  run({"xdotool", "set_desktop", "0", "mousemove", "400", "240"});
}

bool PrivateDesktop::isTidy() {
  std::istringstream windows(run({"wmctrl", "-l"}).value_or(""));
  for (std::string line; std::getline(windows, line);)
    if (!line.ends_with("xfce4-panel")) return false;
  return !hasPanel_ || (registeredItems().empty() && !showsIcon());
}

std::string PrivateDesktop::endOfPanel() {
  return run({"import", "-silent", "-window", "root", "-crop", "30x26+770+0", "-depth", "8", "gray:-"}).value_or("");
}

bool PrivateDesktop::showsIcon() {
  const std::string pixels = endOfPanel();
  return std::set(pixels.begin(), pixels.end()).size() > 4;
}

std::unique_ptr<Process> PrivateDesktop::start(const std::vector<std::string>& command, const Variables& extra) {
  return session_.start(command, Process::Input::written, Process::Output::read, extra);
}

void PrivateDesktop::startPanel() {
  session_.tell("start panel");
  hasPanel_ = true;
}

void PrivateDesktop::stopPanel() {
  session_.tell("stop panel");
  hasPanel_ = false;
}

void PrivateDesktop::killPanel() {
  session_.tell("kill panel");
  hasPanel_ = false;
}

void PrivateDesktop::setTone(Tone tone) {
  if (tone != tone_) session_.tell("tone " + name(tone));
  tone_ = tone;
}

void PrivateDesktop::clickAt(int x, int y) {
  constexpr int steps = 8;
  std::vector<std::string> command{"xdotool", "mousemove", std::to_string(x - steps), std::to_string(y)};
  for (int i = 0; i < steps; ++i) command.insert(command.end(), {"sleep", "0.01", "mousemove_relative", "1", "0"});
  command.insert(command.end(), {"click", "1"});
  if (!run(command)) throw std::runtime_error("no click");
}

void PrivateDesktop::screenshot(const std::filesystem::path& file) {
  if (!run({"scrot", "--overwrite", file.string()})) throw std::runtime_error("no screenshot");
}

}  // namespace tollvane::test
