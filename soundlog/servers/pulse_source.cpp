#include "soundlog/servers/pulse_source.h"

#include <pulse/glib-mainloop.h>
#include <pulse/pulseaudio.h>

#include <chrono>
#include <string_view>
#include <utility>

#include "support/ascii.h"

namespace tollvane::soundlog {
namespace {

Properties lookup(const pa_proplist* list) {
  return [list](const char* name) -> std::string_view {
    const char* const value = list ? pa_proplist_gets(list, name) : nullptr;
    return value ? value : std::string_view();
  };
}

void forget(pa_operation* operation) {
  if (operation) pa_operation_unref(operation);
}

// Whether a module of the server made this stream to pass on what others play.
bool isServersOwn(const pa_sink_input_info& info) {
  return info.client == PA_INVALID_INDEX && info.owner_module != PA_INVALID_INDEX;
}

}  // namespace

ClientClaims pulseClaims(const Properties& properties) {
  ClientClaims claims;
  claims.binary = properties(PA_PROP_APPLICATION_PROCESS_BINARY);
  claims.name = properties(PA_PROP_APPLICATION_NAME);
  const bool elsewhere =
      properties("native-protocol.peer").starts_with("TCP") || properties("pulse.server.type") == "tcp";
  const auto pid = ascii::number<Pid>(properties(PA_PROP_APPLICATION_PROCESS_ID));
  if (pid && *pid > 0 && !elsewhere) claims.declaredPid = pid;
  return claims;
}

struct PulseSource::Callbacks {
  static PulseSource& self(void* data) { return *static_cast<PulseSource*>(data); }

  static void state(pa_context* context, void* data) {
    const pa_context_state_t state = pa_context_get_state(context);
    if (state == PA_CONTEXT_READY) self(data).ready();
    if (!PA_CONTEXT_IS_GOOD(state)) self(data).connectionLost();
  }

  static void server(pa_context*, const pa_server_info* info, void* data) {
    self(data).listen(info ? info->server_name : nullptr);
  }

  static void client(pa_context*, const pa_client_info* info, int end, void* data) {
    if (end == 0) self(data).clientKnown(*info);
  }

  static void stream(pa_context*, const pa_sink_input_info* info, int end, void* data) {
    if (end == 0) self(data).streamKnown(*info);
  }

  // Receives the streams that exist when we connect. The end of this list means that every later start is news.
  static void presentStream(pa_context*, const pa_sink_input_info* info, int end, void* data) {
    if (end == 0) return self(data).streamKnown(*info);
    self(data).tracker_.attached();
    self(data).served_ = true;
    self(data).events_.served();
  }

  static void changed(pa_context* context, pa_subscription_event_type_t event, std::uint32_t index, void* data) {
    const auto facility = event & PA_SUBSCRIPTION_EVENT_FACILITY_MASK;
    const bool removed = (event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) == PA_SUBSCRIPTION_EVENT_REMOVE;
    if (facility == PA_SUBSCRIPTION_EVENT_CLIENT) {
      if (removed) self(data).clients_.erase(index);
      if (!removed) forget(pa_context_get_client_info(context, index, client, data));
    } else if (facility == PA_SUBSCRIPTION_EVENT_SINK_INPUT) {
      if (removed) self(data).tracker_.removed(index);
      if (!removed) forget(pa_context_get_sink_input_info(context, index, stream, data));
    }
  }
};

PulseSource::PulseSource(Remember remember, Events events)
    : remember_(std::move(remember)), events_(std::move(events)), mainloop_(pa_glib_mainloop_new(nullptr)) {}

PulseSource::~PulseSource() {
  disconnect();
  if (mainloop_) pa_glib_mainloop_free(mainloop_);
}

bool PulseSource::connect() {
  if (context_) return true;
  if (!mainloop_) return false;
  context_ = pa_context_new(pa_glib_mainloop_get_api(mainloop_), "TollvaneLog");
  if (!context_) return false;
  pa_context_set_state_callback(context_, Callbacks::state, this);
  if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) >= 0) return true;
  disconnect();
  return false;
}

void PulseSource::disconnect() {
  teardown_.reset();
  clients_.clear();
  tracker_.reset();
  served_ = false;
  pa_context* const context = std::exchange(context_, nullptr);
  if (!context) return;
  pa_context_set_state_callback(context, nullptr, nullptr);
  pa_context_set_subscribe_callback(context, nullptr, nullptr);
  pa_context_disconnect(context);
  pa_context_unref(context);
}

void PulseSource::ready() { forget(pa_context_get_server_info(context_, Callbacks::server, this)); }

void PulseSource::listen(const char* server) {
  if (events_.wanted && !events_.wanted(server ? server : "")) return connectionLost();
  pa_context_set_subscribe_callback(context_, Callbacks::changed, this);
  const auto wanted =
      static_cast<pa_subscription_mask_t>(PA_SUBSCRIPTION_MASK_CLIENT | PA_SUBSCRIPTION_MASK_SINK_INPUT);
  forget(pa_context_subscribe(context_, wanted, nullptr, nullptr));
  forget(pa_context_get_client_info_list(context_, Callbacks::client, this));
  forget(pa_context_get_sink_input_info_list(context_, Callbacks::presentStream, this));
}

void PulseSource::connectionLost() {
  if (teardown_.active()) return;
  teardown_ = callAfter(Duration::zero(), [this] {
    const bool served = served_;
    disconnect();
    events_.ended(served);
  });
}

void PulseSource::clientKnown(const pa_client_info& info) {
  ClientClaims claims = pulseClaims(lookup(info.proplist));
  Client& client = clients_[info.index];
  if (claims == client.claims) return;
  client.claims = std::move(claims);
  Maker maker = remember_(client.claims);
  // Keep what we learned while the process lived.
  if (maker.known() || !client.maker.known()) client.maker = std::move(maker);
}

void PulseSource::streamKnown(const pa_sink_input_info& info) {
  const Properties properties = lookup(info.proplist);
  if (isServersOwn(info) || isRelay(properties)) return;
  const Instant now = std::chrono::steady_clock::now();
  if (info.corked) {
    tracker_.stopped(info.index, now);
  } else if (tracker_.running(info.index, now)) {
    events_.started(start(info, properties));
  }
}

// A stream from the sample cache has the properties of the process that loaded the sample. The stream's client is the
// process that plays it.
StreamStart PulseSource::start(const pa_sink_input_info& info, const Properties& properties) const {
  StreamStart start;
  start.alert = isAlert(properties);
  start.runs = tracker_.watch(info.index);
  const auto client = clients_.find(info.client);
  if (client != clients_.end()) start.maker = client->second.maker;
  if (!start.maker.known()) {
    Maker maker = remember_(pulseClaims(properties));
    if (maker.known() || start.maker.name.empty()) start.maker = std::move(maker);
  }
  return start;
}

}  // namespace tollvane::soundlog

// The module's only entry point, see loadPulseSource.
extern "C" __attribute__((visibility("default"))) tollvane::soundlog::SoundSource* tollvaneMakePulseSource(
    tollvane::soundlog::SoundSource::Remember remember, tollvane::soundlog::SoundSource::Events events);

tollvane::soundlog::SoundSource* tollvaneMakePulseSource(tollvane::soundlog::SoundSource::Remember remember,
                                                         tollvane::soundlog::SoundSource::Events events) {
  return new tollvane::soundlog::PulseSource(std::move(remember), std::move(events));
}
