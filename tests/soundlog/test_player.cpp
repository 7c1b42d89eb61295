// A player that is controlled by signals, for the tests of TollvaneLog. It makes a stream that waits and prints
// "ready"; it plays at SIGUSR1, pauses at SIGUSR2 and ends at SIGTERM. If its argument is "two-streams" it makes two
// streams; any other argument is a name, which it owns on the session bus; it then plays when a
// "Notify" arrives, too.
#include <pulse/pulseaudio.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <string_view>
#include <thread>
#include <vector>

namespace {

void feedSilence(pa_stream* stream, std::size_t size, void*) {
  const std::vector<char> zeros(size);
  pa_stream_write(stream, zeros.data(), zeros.size(), nullptr, 0, PA_SEEK_RELATIVE);
}

void await(pa_threaded_mainloop* loop, const auto& condition) {
  while (!condition()) pa_threaded_mainloop_wait(loop);
}

void wake(void* loop) { pa_threaded_mainloop_signal(static_cast<pa_threaded_mainloop*>(loop), 0); }

// Makes a stream that waits; null if the server refuses it.
pa_stream* makeStream(pa_threaded_mainloop* loop, pa_context* context) {
  const pa_sample_spec format = {PA_SAMPLE_S16LE, 48000, 1};
  pa_proplist* const properties = pa_proplist_new();
  pa_proplist_sets(properties, "node.name", "test_player_stream");
  pa_stream* const stream = pa_stream_new_with_proplist(context, "silence", &format, nullptr, properties);
  pa_proplist_free(properties);
  pa_stream_set_write_callback(stream, feedSilence, nullptr);
  pa_stream_set_state_callback(
      stream, [](pa_stream*, void* data) { wake(data); }, loop);
  pa_stream_connect_playback(stream, nullptr, nullptr, PA_STREAM_START_CORKED, nullptr, nullptr);
  await(loop, [&] { return pa_stream_get_state(stream) >= PA_STREAM_READY; });
  return pa_stream_get_state(stream) == PA_STREAM_READY ? stream : nullptr;
}

int rings(sd_bus_message* call, void*, sd_bus_error*) {
  if (!sd_bus_message_is_method_call(call, "org.freedesktop.Notifications", "Notify")) return 0;
  kill(getpid(), SIGUSR1);
  return sd_bus_reply_method_return(call, "u", 1);
}

// Owns the name, and answers in a thread of its own. False if the bus does not allow it.
bool serveNotifications(const char* name) {
  sd_bus* bus = nullptr;
  if (sd_bus_open_user(&bus) < 0 || sd_bus_request_name(bus, name, 0) < 0) return false;
  sd_bus_add_object(bus, nullptr, "/org/freedesktop/Notifications", rings, nullptr);
  std::thread([bus] {
    while (sd_bus_process(bus, nullptr) >= 0) sd_bus_wait(bus, UINT64_MAX);
  }).detach();
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  const bool two = count > 1 && std::string_view(arguments[1]) == "two-streams";
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGUSR1, SIGUSR2, SIGTERM}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);

  pa_threaded_mainloop* const loop = pa_threaded_mainloop_new();
  pa_context* const context = pa_context_new(pa_threaded_mainloop_get_api(loop), "test_player");
  const auto changed = [](pa_context* with, void* data) {
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(with))) _exit(1);  // ends with the sound server
    wake(data);
  };
  pa_context_set_state_callback(context, changed, loop);
  pa_threaded_mainloop_start(loop);
  pa_threaded_mainloop_lock(loop);
  pa_context_connect(context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
  await(loop, [&] { return pa_context_get_state(context) >= PA_CONTEXT_READY; });
  if (pa_context_get_state(context) != PA_CONTEXT_READY) return 1;

  const std::array<pa_stream*, 2> streams = {makeStream(loop, context), two ? makeStream(loop, context) : nullptr};
  if (!streams[0] || (two && !streams[1])) return 1;
  pa_threaded_mainloop_unlock(loop);
  if (count > 1 && !two && !serveNotifications(arguments[1])) return 1;
  std::printf("ready %d\n", getpid());
  std::fflush(stdout);

  for (int signal = 0; signal != SIGTERM;) {
    sigwait(&signals, &signal);
    if (signal == SIGTERM) break;
    pa_threaded_mainloop_lock(loop);
    for (pa_stream* stream : streams) {
      if (stream) pa_operation_unref(pa_stream_cork(stream, signal == SIGUSR2, nullptr, nullptr));
    }
    pa_threaded_mainloop_unlock(loop);
  }
  _exit(0);  // like a crash: the server must notice by itself
}
