#include "platform/linux/workspace/sway_ipc.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSocketNotifier>
#include <QTimer>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include "platform/posix/local_socket.h"

namespace tollvane {
namespace {

using namespace std::chrono_literals;

constexpr auto swayPatience = 1s;
constexpr std::uint32_t longestAnswer = 16 << 20;
constexpr char magic[] = {'i', '3', '-', 'i', 'p', 'c'};
constexpr std::size_t headerSize = sizeof magic + 2 * sizeof(std::uint32_t);

enum class Question : std::uint32_t { runCommand = 0, getTree = 4 };

QByteArray message(Question question, const QByteArray& payload) {
  const std::uint32_t numbers[] = {static_cast<std::uint32_t>(payload.size()), static_cast<std::uint32_t>(question)};
  QByteArray bytes(magic, sizeof magic);
  bytes.append(reinterpret_cast<const char*>(numbers), sizeof numbers);
  return bytes + payload;
}

// Of all windows the best one so far.
struct Search {
  const ActivationTarget& target;
  std::optional<std::int64_t> window;
  ActivationTarget::Fit best{};

  // "focus" lists a container's children, the one that was in front most lately first.
  void look(const QJsonObject& node, int depth) {
    constexpr int deepest = 64;
    if (depth > deepest) return;
    if (node.contains(QLatin1String("pid"))) consider(node);
    const QJsonArray order = node[QLatin1String("focus")].toArray();
    for (const QJsonValue id : order) {
      for (const char* kind : {"nodes", "floating_nodes"}) {
        for (const QJsonValue child : node[QLatin1String(kind)].toArray()) {
          if (child[QLatin1String("id")] == id) look(child.toObject(), depth + 1);
        }
      }
    }
  }

  void consider(const QJsonObject& node) {
    const auto pid = static_cast<Pid>(node[QLatin1String("pid")].toInt());
    const std::string appId = node[QLatin1String("app_id")].toString().toStdString();
    const QJsonValue properties = node[QLatin1String("window_properties")];
    const std::string windowClass = properties[QLatin1String("class")].toString().toStdString();
    const auto rank = target.rank(pid, {appId, windowClass});
    if (!rank) return;
    const auto fit = target.fit(*rank, node[QLatin1String("name")].toString().toStdString());
    if (!fit || (window && best <= *fit)) return;
    best = *fit;
    window = node[QLatin1String("id")].toInteger();
  }
};

bool allSucceeded(const QByteArray& answer) {
  const QJsonArray results = QJsonDocument::fromJson(answer).array();
  for (const QJsonValue result : results) {
    if (!result[QLatin1String("success")].toBool()) return false;
  }
  return !results.isEmpty();
}

}  // namespace

std::optional<std::int64_t> bestWindow(const QByteArray& tree, const ActivationTarget& target) {
  Search search{target, std::nullopt};
  search.look(QJsonDocument::fromJson(tree).object(), 0);
  return search.window;
}

// One activation: the tree, then the command. Deletes itself when it is over.
class SwayIpc::Conversation : public QObject {
 public:
  Conversation(ActivationTarget target, std::function<void(Raised)> done)
      : QObject(QCoreApplication::instance()), target_(std::move(target)), done_(std::move(done)) {}

  void start(const std::string& path) {
    stream_ = LocalStream::to(path);
    if (!stream_) return finish(Raised::unknown);
    input_.emplace(stream_.descriptor(), QSocketNotifier::Read);
    connect(&*input_, &QSocketNotifier::activated, this, [this] { read(); });
    QTimer::singleShot(swayPatience, this, [this] { finish(Raised::unknown); });
    ask(Question::getTree, {});
  }

 private:
  // A question is short, so it has room in the socket of a compositor that listens.
  void ask(Question question, const QByteArray& payload) {
    const QByteArray bytes = message(question, payload);
    if (stream_.send({bytes.constData(), static_cast<std::size_t>(bytes.size())}) !=
        static_cast<std::size_t>(bytes.size()))
      finish(Raised::unknown);
  }

  void read() {
    std::array<char, 16 * 1024> buffer;
    std::string_view bytes;
    const auto reading = stream_.read(buffer.data(), buffer.size(), bytes);
    if (reading == LocalStream::Reading::nothingYet) return;
    if (reading == LocalStream::Reading::ended) return finish(Raised::unknown);
    received_.append(bytes.data(), static_cast<qsizetype>(bytes.size()));
    if (static_cast<std::size_t>(received_.size()) < headerSize) return;
    std::uint32_t length = 0;
    std::memcpy(&length, received_.constData() + sizeof magic, sizeof length);
    if (!received_.startsWith(QByteArray(magic, sizeof magic)) || length > longestAnswer)
      return finish(Raised::unknown);
    if (static_cast<std::size_t>(received_.size()) < headerSize + length) return;
    const QByteArray answer = received_.mid(headerSize, length);
    received_.clear();
    if (commanded_) return finish(allSucceeded(answer) ? Raised::yes : Raised::noWindow);
    if (QJsonDocument::fromJson(answer).isNull()) return finish(Raised::unknown);
    const auto window = bestWindow(answer, target_);
    if (!window) return finish(Raised::noWindow);
    commanded_ = true;
    ask(Question::runCommand, "[con_id=" + QByteArray::number(qlonglong(*window)) + "] focus");
  }

  void finish(Raised raised) {
    if (!done_) return;
    const auto done = std::exchange(done_, nullptr);
    if (input_) input_->setEnabled(false);
    stream_.close();
    deleteLater();
    done(raised);
  }

  ActivationTarget target_;
  std::function<void(Raised)> done_;
  LocalStream stream_;
  std::optional<QSocketNotifier> input_;
  QByteArray received_;
  bool commanded_ = false;
};

void SwayIpc::raise(const ActivationTarget& target, std::function<void(Raised)> done) {
  const std::string path = qgetenv("SWAYSOCK").toStdString();
  if (path.empty()) return done(Raised::unknown);
  auto* const conversation = new Conversation(target, std::move(done));
  conversation->start(path);
}

}  // namespace tollvane
