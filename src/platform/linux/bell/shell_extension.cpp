#include "platform/linux/bell/shell_extension.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <utility>
#include <vector>

#include "support/ascii.h"

namespace tollvane {
namespace {

QDBusMessage callShell(const char* path, const char* interface, const char* method) {
  QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QString::fromLatin1(path),
                                                     QString::fromLatin1(interface), QString::fromLatin1(method));
  call.setAutoStartService(false);
  return call;
}

}  // namespace

std::string formForShell(const std::string& version) {
  constexpr int firstModules = 45;
  constexpr int newest = 48;
  constexpr int oldest = 43;
  const auto major = ascii::number<int>(version.substr(0, version.find_first_not_of("0123456789")));
  if (!major || *major < oldest || *major > newest) return {};
  return *major < firstModules ? "43" : "45";
}

ShellExtension::ShellExtension(QDBusConnection bus, Files& files, std::filesystem::path forms,
                               std::optional<std::filesystem::path> data)
    : bus_(std::move(bus)), files_(files), forms_(std::move(forms)), data_(std::move(data)) {}

std::filesystem::path ShellExtension::target() const { return *data_ / "gnome-shell/extensions" / uuid; }

void ShellExtension::find(std::function<void()> offer, std::function<void()> otherwise) {
  if (!bus_.isConnected() || !data_ || files_.exists(target())) return otherwise();
  QDBusMessage ask = callShell("/org/gnome/Shell", "org.freedesktop.DBus.Properties", "Get");
  ask << QStringLiteral("org.gnome.Shell") << QStringLiteral("ShellVersion");
  auto* reply = new QDBusPendingCallWatcher(bus_.asyncCall(ask), QCoreApplication::instance());
  QObject::connect(reply, &QDBusPendingCallWatcher::finished, reply,
                   alive_.guard([this, offer = std::move(offer),
                                 otherwise = std::move(otherwise)](QDBusPendingCallWatcher* finished) {
                     finished->deleteLater();
                     const QDBusPendingReply<QDBusVariant> answer = *finished;
                     const QString version = answer.isValid() ? answer.value().variant().toString() : QString();
                     const std::string form = formForShell(version.toStdString());
                     form_ = forms_ / form / uuid;
                     form.empty() || !files_.exists(form_) ? otherwise() : offer();
                   }));
}

bool ShellExtension::install() {
  // A package has put it there for all users.
  const bool isThere = files_.exists(std::filesystem::path("/usr/share/gnome-shell/extensions") / uuid);
  const auto names = files_.list(form_);
  if (!isThere && (!names || !files_.createDirectories(target()))) return false;
  for (const std::string& name : isThere ? std::vector<std::string>() : *names)
    if (!files_.copy(form_ / name, target() / name)) return false;
  bus_.asyncCall(callShell("/org/gnome/Shell", "org.gnome.Shell.Extensions", "EnableExtension")
                 << QString::fromLatin1(uuid));
  return true;
}

}  // namespace tollvane
