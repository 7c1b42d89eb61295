#include "soundlog/servers/pipewire_source.h"

#include <pipewire/impl.h>
#include <pipewire/pipewire.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "support/ascii.h"

namespace tollvane::soundlog {
namespace {

std::optional<Pid> processNumber(std::string_view text) {
  const auto pid = ascii::number<Pid>(text);
  return pid && *pid > 0 ? pid : std::nullopt;
}

Properties lookup(const spa_dict* dictionary) {
  return [dictionary](const char* name) -> std::string_view {
    const char* const value = dictionary ? spa_dict_lookup(dictionary, name) : nullptr;
    return value ? value : std::string_view();
  };
}

constexpr std::string_view pulseSide = "pipewire-pulse";

constexpr std::uint32_t noClient = std::numeric_limits<std::uint32_t>::max();

std::uint32_t clientId(const Properties& properties) {
  return ascii::number<std::uint32_t>(properties(PW_KEY_CLIENT_ID)).value_or(noClient);
}

}  // namespace

ClientClaims pipeWireClaims(const Properties& properties) {
  ClientClaims claims;
  claims.binary = properties(PW_KEY_APP_PROCESS_BINARY);
  claims.name = properties(PW_KEY_APP_NAME);
  if (properties(PW_KEY_CLIENT_API) != pulseSide) {
    claims.checkedPid = processNumber(properties(PW_KEY_SEC_PID));
  } else {
    // The kernel's number would be that of the server that speaks PulseAudio's protocol for the client. The client's
    // own number is useless if it comes from another machine, or from a sandbox, which has process numbers of its own.
    claims.sandboxId = properties("pipewire.access.portal.app_id");
    const bool elsewhere = properties("pulse.server.type") == "tcp" || !claims.sandboxId.empty();
    if (!elsewhere) claims.declaredPid = processNumber(properties(PW_KEY_APP_PROCESS_ID));
  }
  return claims;
}

// An object of the server that we follow: its proxy and our listener on it.
class PipeWireSource::Bound {
 public:
  explicit Bound(void* proxy) : proxy_(static_cast<pw_proxy*>(proxy)) {}
  Bound(const Bound&) = delete;
  Bound& operator=(const Bound&) = delete;
  ~Bound() {
    if (!proxy_) return;
    if (hook_.link.next) spa_hook_remove(&hook_);
    pw_proxy_destroy(proxy_);
  }

 protected:
  pw_proxy* proxy_;
  spa_hook hook_{};
};

class PipeWireSource::Client : public Bound {
 public:
  Client(void* proxy, const Remember& remember) : Bound(proxy), remember_(remember) {
    static constexpr pw_client_events events = {
        .version = PW_VERSION_CLIENT_EVENTS,
        .info = [](void* self, const pw_client_info* info) { static_cast<Client*>(self)->update(*info); },
        .permissions = nullptr};
    if (proxy_) pw_client_add_listener(reinterpret_cast<pw_client*>(proxy_), &hook_, &events, this);
  }

  // Shared with the client's streams, which the server may remove later than the client.
  std::shared_ptr<const Maker> maker() const { return maker_; }

 private:
  void update(const pw_client_info& info) {
    if (!(info.change_mask & PW_CLIENT_CHANGE_MASK_PROPS)) return;
    ClientClaims claims = pipeWireClaims(lookup(info.props));
    if (claims == claims_) return;
    const bool wasChecked = claims_.checkedPid.has_value();
    claims_ = std::move(claims);
    Maker maker = remember_(claims_);
    // Keep what we learned while the process lived, unless that was pipewire-pulse itself, recorded before the client's
    // properties said that it speaks PulseAudio.
    const bool wasServers = wasChecked && !claims_.checkedPid;
    if (maker.known() || !maker_->known() || wasServers) *maker_ = std::move(maker);
  }

  const Remember& remember_;
  ClientClaims claims_;
  std::shared_ptr<Maker> maker_ = std::make_shared<Maker>();
};

class PipeWireSource::Node : public Bound {
 public:
  // `isStream`: whether it is certainly a stream that plays. Else it counts only if it proves to be a JACK client.
  Node(void* proxy, PipeWireSource& source, std::uint32_t id, StreamTracker::Serial serial, bool isStream,
       std::shared_ptr<const Maker> maker)
      : Bound(proxy), source_(source), id_(id), serial_(serial), isStream_(isStream), maker_(std::move(maker)) {
    static constexpr pw_node_events events = {
        .version = PW_VERSION_NODE_EVENTS,
        .info = [](void* self, const pw_node_info* info) { static_cast<Node*>(self)->update(*info); },
        .param = nullptr};
    if (proxy_) pw_node_add_listener(reinterpret_cast<pw_node*>(proxy_), &hook_, &events, this);
  }
  ~Node() { source_.tracker_.removed(serial_); }

  StreamTracker::Serial serial() const { return serial_; }

  // To be called when its links have changed.
  void linked() {
    if (isJack_) source_.nodeState(*this, running_ && source_.leadsToSink(id_));
  }

  StreamStart start() const {
    StreamStart start{maker_ ? *maker_ : Maker(), alert_, source_.tracker_.watch(serial_)};
    if (start.maker.name.empty()) start.maker.name = name_;
    return start;
  }

 private:
  void update(const pw_node_info& info) {
    if (info.change_mask & PW_NODE_CHANGE_MASK_PROPS) readProperties(lookup(info.props));
    // Without this bit, `info.state` may be out of date.
    if (!(info.change_mask & PW_NODE_CHANGE_MASK_STATE)) return;
    running_ = info.state == PW_NODE_STATE_RUNNING;
    linked();
    if (isStream_ && !relay_) source_.nodeState(*this, running_);
  }

  void readProperties(const Properties& properties) {
    relay_ = isRelay(properties);
    alert_ = isAlert(properties);
    isJack_ = !isStream_ && properties(PW_KEY_CLIENT_API) == "jack";
    name_ = properties(PW_KEY_APP_NAME);
    if (name_.empty()) name_ = properties(PW_KEY_NODE_NAME);
    if (maker_) return;
    const auto client = source_.clients_.find(clientId(properties));
    if (client != source_.clients_.end()) maker_ = client->second->maker();
  }

  PipeWireSource& source_;
  std::uint32_t id_;
  StreamTracker::Serial serial_;
  bool isStream_;
  bool isJack_ = false;
  bool running_ = false;
  std::shared_ptr<const Maker> maker_;
  std::string name_;
  bool relay_ = false;
  bool alert_ = false;
};

struct PipeWireSource::Callbacks {
  static void done(void* self, std::uint32_t id, int sequence) {
    if (id == PW_ID_CORE) static_cast<PipeWireSource*>(self)->syncDone(sequence);
  }
  static void error(void* self, std::uint32_t id, int, int result, const char*) {
    // An object that vanishes while it is being bound causes an error too, sometimes with the core's id.
    if (id == PW_ID_CORE && result == -EPIPE) static_cast<PipeWireSource*>(self)->connectionLost();
  }
  static void global(void* self, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                     const spa_dict* properties) {
    static_cast<PipeWireSource*>(self)->objectAppeared(id, type, properties);
  }
  static void globalRemove(void* self, std::uint32_t id) { static_cast<PipeWireSource*>(self)->objectVanished(id); }

  static constexpr pw_core_events core() {
    pw_core_events events{};
    events.version = PW_VERSION_CORE_EVENTS;
    events.done = done;
    events.error = error;
    return events;
  }
  static constexpr pw_registry_events registry() {
    pw_registry_events events{};
    events.version = PW_VERSION_REGISTRY_EVENTS;
    events.global = global;
    events.global_remove = globalRemove;
    return events;
  }
};

PipeWireSource::PipeWireSource(Remember remember, Events events)
    : remember_(std::move(remember)), events_(std::move(events)) {
  pw_init(nullptr, nullptr);
  // PipeWire would warn about parts that are needed for playing; they are missing on purpose.
  if (!std::getenv("PIPEWIRE_DEBUG")) pw_log_set_level(SPA_LOG_LEVEL_ERROR);
  loop_ = pw_loop_new(nullptr);
  if (!loop_) return;
  // No configuration file: it would load modules for playing (real-time threads, adapters), and we only listen.
  context_ = pw_context_new(loop_, pw_properties_new(PW_KEY_CONFIG_NAME, "null", "support.dbus", "false", nullptr), 0);
  if (!context_) return;
  pw_context_load_module(context_, "libpipewire-module-protocol-native", nullptr, nullptr);
  pw_loop_enter(loop_);
  loopWatch_ = watchDescriptor(pw_loop_get_fd(loop_), G_IO_IN, [this](GIOCondition) { pw_loop_iterate(loop_, 0); });
}

PipeWireSource::~PipeWireSource() {
  disconnect();
  loopWatch_.reset();
  if (context_) {
    pw_loop_leave(loop_);
    pw_context_destroy(context_);
  }
  if (loop_) pw_loop_destroy(loop_);
  pw_deinit();
}

bool PipeWireSource::connect() {
  static constexpr pw_core_events coreEvents = Callbacks::core();
  static constexpr pw_registry_events registryEvents = Callbacks::registry();
  if (core_) return true;
  if (!context_) return false;
  core_ = pw_context_connect(context_, pw_properties_new(PW_KEY_APP_NAME, "TollvaneLog", nullptr), 0);
  if (!core_) return false;
  coreHook_ = {};
  registryHook_ = {};
  pw_core_add_listener(core_, &coreHook_, &coreEvents, this);
  registry_ = pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0);
  pw_registry_add_listener(registry_, &registryHook_, &registryEvents, this);
  syncsDone_ = 0;
  awaitedSync_ = pw_core_sync(core_, PW_ID_CORE, 0);
  return true;
}

void PipeWireSource::disconnect() {
  teardown_.reset();
  nodes_.clear();
  clients_.clear();
  sinks_.clear();
  links_.clear();
  tracker_.reset();
  if (!core_) return;
  spa_hook_remove(&registryHook_);
  spa_hook_remove(&coreHook_);
  pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
  pw_core_disconnect(core_);
  registry_ = nullptr;
  core_ = nullptr;
}

bool PipeWireSource::hasPulseSide() const {
  return std::any_of(clients_.begin(), clients_.end(),
                     [](const auto& client) { return client.second->maker()->name == pulseSide; });
}

void PipeWireSource::objectAppeared(std::uint32_t id, std::string_view type, const spa_dict* properties) {
  const Properties of = lookup(properties);
  if (type == PW_TYPE_INTERFACE_Client) {
    void* const proxy = pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Client, PW_VERSION_CLIENT, 0);
    clients_.insert_or_assign(id, std::make_unique<Client>(proxy, remember_));
  } else if (type == PW_TYPE_INTERFACE_Link) {
    const auto node = [&](const char* key) { return ascii::number<std::uint32_t>(of(key)); };
    const auto from = node(PW_KEY_LINK_OUTPUT_NODE);
    const auto to = node(PW_KEY_LINK_INPUT_NODE);
    if (from && to) linkAppeared(id, *from, *to);
  } else if (type == PW_TYPE_INTERFACE_Node) {
    const std::string_view kind = of(PW_KEY_MEDIA_CLASS);
    if (kind == "Audio/Sink" || kind == "Audio/Duplex") sinks_.insert(id);
    const bool isStream = kind == "Stream/Output/Audio";
    // A JACK client's node has no class. Whether it is one, its client or its own properties tell, but not these.
    if (!isStream && (!kind.empty() || clientId(of) == noClient)) return;
    void* const proxy = pw_registry_bind(registry_, id, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0);
    const auto serial = ascii::number<StreamTracker::Serial>(of(PW_KEY_OBJECT_SERIAL)).value_or(id);
    const auto client = clients_.find(clientId(of));
    nodes_.insert_or_assign(id, std::make_unique<Node>(proxy, *this, id, serial, isStream,
                                                       client == clients_.end() ? nullptr : client->second->maker()));
  }
}

void PipeWireSource::objectVanished(std::uint32_t id) {
  nodes_.erase(id);
  clients_.erase(id);
  sinks_.erase(id);
  const auto link = links_.find(id);
  if (link == links_.end()) return;
  const std::uint32_t from = link->second.from;
  links_.erase(link);
  if (const auto node = nodes_.find(from); node != nodes_.end()) node->second->linked();
}

void PipeWireSource::linkAppeared(std::uint32_t id, std::uint32_t from, std::uint32_t to) {
  links_.insert_or_assign(id, Link{from, to});
  if (const auto node = nodes_.find(from); node != nodes_.end()) node->second->linked();
}

bool PipeWireSource::leadsToSink(std::uint32_t node) const {
  return std::any_of(links_.begin(), links_.end(),
                     [&](const auto& link) { return link.second.from == node && sinks_.count(link.second.to) > 0; });
}

// The server answers in order. At the first answer, all objects have been announced, and we have bound them; at the
// second, all of them have reported their state.
void PipeWireSource::syncDone(int sequence) {
  if (sequence != awaitedSync_ || syncsDone_ >= 2) return;
  if (++syncsDone_ == 1) {
    awaitedSync_ = pw_core_sync(core_, PW_ID_CORE, 0);
    return;
  }
  tracker_.attached();
  events_.served();
}

// Called by the connection, which must not be destroyed before this has returned.
void PipeWireSource::connectionLost() {
  if (teardown_.active()) return;
  teardown_ = callAfter(Duration::zero(), [this] {
    const bool served = syncsDone_ >= 2;
    disconnect();
    events_.ended(served);
  });
}

void PipeWireSource::nodeState(const Node& node, bool running) {
  const Instant now = std::chrono::steady_clock::now();
  if (!running) {
    tracker_.stopped(node.serial(), now);
  } else if (tracker_.running(node.serial(), now)) {
    events_.started(node.start());
  }
}

}  // namespace tollvane::soundlog
