// A player that speaks JACK's language: it makes one output port (and prints "ready"), connects it to the first input
// there is at SIGUSR1, disconnects it at SIGUSR2, and ends at SIGTERM. It plays silence. For the tests of
// TollvaneLog, to be run by pw-jack; a client of the real PipeWire. Source: the documentation of libjack (jack/jack.h).
#include <dlfcn.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace {

// The library is not compiled against, because only PipeWire's own can reach PipeWire.
void* library = nullptr;

template <typename Function>
Function* find(const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

void* (*bufferOf)(void* port, std::uint32_t frames) = nullptr;

int fill(std::uint32_t frames, void* port) {
  std::memset(bufferOf(port, frames), 0, frames * sizeof(float));
  return 0;
}

}  // namespace

int main() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGUSR1, SIGUSR2, SIGTERM}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);

  library = dlopen("libjack.so.0", RTLD_NOW);
  if (!library) return 1;
  bufferOf = find<void*(void*, std::uint32_t)>("jack_port_get_buffer");
  constexpr int noServerOfOurOwn = 1;
  void* const client = find<void*(const char*, int, int*, ...)>("jack_client_open")("test", noServerOfOurOwn, nullptr);
  if (!client) return 1;
  constexpr unsigned long isInput = 1, isOutput = 2;
  constexpr const char* audio = "32 bit float mono audio";
  void* const port = find<void*(void*, const char*, const char*, unsigned long, unsigned long)>("jack_port_register")(
      client, "out", audio, isOutput, 0);
  find<int(void*, int (*)(std::uint32_t, void*), void*)>("jack_set_process_callback")(client, fill, port);
  if (!port || find<int(void*)>("jack_activate")(client) != 0) return 1;
  std::printf("ready %d\n", getpid());
  std::fflush(stdout);

  const char* const own = find<const char*(const void*)>("jack_port_name")(port);
  for (int signal = 0; sigwait(&signals, &signal) == 0 && signal != SIGTERM;) {
    const char** const outputs = find<const char**(void*, const char*, const char*, unsigned long)>("jack_get_ports")(
        client, nullptr, audio, isInput);
    if (!outputs) return 1;
    const char* const verb = signal == SIGUSR1 ? "jack_connect" : "jack_disconnect";
    find<int(void*, const char*, const char*)>(verb)(client, own, outputs[0]);
    find<void(void*)>("jack_free")(outputs);
  }
  _exit(0);
}
