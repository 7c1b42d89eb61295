// What a program that is asked over the bus to come forward is told about the user's click.
// Source: freedesktop.org, Desktop Entry 1.5 (D-Bus Activation).
#pragma once

#include <QString>
#include <QVariantMap>
#include <string>

namespace tollvane {

inline QVariantMap platformData(const std::string& token) {
  if (token.empty()) return {};
  const QString text = QString::fromStdString(token);
  return {{QStringLiteral("activation-token"), text}, {QStringLiteral("desktop-startup-id"), text}};
}

// The token in there; empty where there is none.
inline std::string tokenOf(const QVariantMap& data) {
  const QString token = data.value(QStringLiteral("activation-token")).toString();
  return (token.isEmpty() ? data.value(QStringLiteral("desktop-startup-id")).toString() : token).toStdString();
}

}  // namespace tollvane
