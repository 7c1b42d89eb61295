// The permission to come forward that a click of the user gives: a text that the window system hands out, and wants to
// see before it lets another window come to the front. Empty if none exists. Main thread only.
// Sources: freedesktop.org, Startup Notification 0.2 and Desktop Entry 1.5 (D-Bus Activation); Wayland,
// xdg-activation-v1.
#pragma once

#include <QString>
#include <QVariantMap>
#include <functional>
#include <string>

namespace tollvane {

// Answers with the token of the last click, which is good for one use.
using TokenSource = std::function<std::string()>;

// What a program that is asked over the bus to come forward is told about the user's click.
inline QVariantMap platformData(const std::string& token) {
  if (token.empty()) return {};
  const QString text = QString::fromStdString(token);
  return {{QStringLiteral("activation-token"), text}, {QStringLiteral("desktop-startup-id"), text}};
}

// The token in there; empty if none exists.
inline std::string tokenOf(const QVariantMap& data) {
  const QString token = data.value(QStringLiteral("activation-token")).toString();
  return (token.isEmpty() ? data.value(QStringLiteral("desktop-startup-id")).toString() : token).toStdString();
}

}  // namespace tollvane
