#include "doctor/diagnosis.h"

#include <algorithm>

#include "model/paths.h"
#include "support/json.h"
#include "support/json_value.h"
#include "support/text.h"

namespace tollvane {
namespace {

constexpr std::string_view restart = "Quit Tollvane in its menu, and start it again.";
constexpr std::size_t widest = 100;

std::string shown(const std::filesystem::path& path, const Examination& found) {
  if (!found.home || found.home->native().size() < 2) return path;
  const std::string& home = found.home->native();
  if (path.native() == home) return "~";
  return path.native().starts_with(home + "/") ? "~" + path.native().substr(home.size()) : path.native();
}

Finding programFinding(const Examination& found) {
  if (found.missingParts.empty())
    return {"program", Health::good, "Tollvane is complete, in " + shown(found.bundle, found) + "."};
  std::string parts;
  for (const std::string& part : found.missingParts) parts += (parts.empty() ? "" : ", ") + part;
  return {"program", Health::bad, "Parts of Tollvane are missing in " + shown(found.bundle, found) + ": " + parts + ".",
          "Install Tollvane again."};
}

Finding runningFinding(const Examination& found, const std::string& version) {
  if (!found.hasSessionBus) {
    return {"running", Health::bad, "There is no session bus, so the desktop cannot be asked.",
            "Run this command in a terminal of your desktop, as the user who is logged in there."};
  }
  if (!found.running) return {"running", Health::note, "Tollvane does not run.", "Start it from your applications."};
  const RunningTollvane& running = *found.running;
  if (running.version.empty()) {
    return {"running", Health::bad, "Tollvane runs, but does not say how it is.",
            "It may be an older version. " + std::string(restart)};
  }
  if (running.isOutdated || running.version != version) {
    return {"running", Health::note,
            "Tollvane " + running.version + " runs, but its program has been replaced or removed since it was started.",
            std::string(restart)};
  }
  return {"running", Health::good, "Tollvane " + running.version + " runs."};
}

Finding soundFinding(const Examination& found) {
  if (found.soundServers.empty()) {
    return {"sound", Health::bad, "No sound server answers, so no sound can be heard.",
            "Start one: systemctl --user start pipewire pipewire-pulse wireplumber"};
  }
  std::string servers;
  for (const std::string& server : found.soundServers) servers += (servers.empty() ? "" : " and ") + server;
  if (found.running && !found.running->hearsLogTool) {
    return {"sound", Health::bad, servers + " can be reached, but Tollvane's program TollvaneLog does not run.",
            "Run \"TollvaneLog stream\" in a terminal, and see why."};
  }
  if (found.running && !found.running->hearsSoundServer) {
    return {"sound", Health::bad, servers + " can be reached from here, but not by the Tollvane that runs.",
            std::string(restart)};
  }
  return {"sound", Health::good, "Sounds can be heard: " + servers + " can be reached."};
}

Finding lastSoundFinding(const Examination& found) {
  if (found.lastSound.empty())
    return {"last sound", Health::note, "No sound has been heard yet.", "Play one while Tollvane runs."};
  return {"last sound", Health::good, "The last sound was heard on " + found.lastSound + "."};
}

Finding notificationFinding(const Examination& found) {
  if (found.notificationService)
    return {"notifications", Health::good, "Notifications are shown by " + *found.notificationService + "."};
  return {"notifications", Health::note,
          "No notification service runs, so no sound is taken for that of a notification.",
          "Nothing, if your desktop shows no notifications; otherwise start its notification service."};
}

Finding bellFinding(const Examination& found) {
  const std::string by = found.bar.empty() ? "" : " by " + found.bar;
  if (found.bellPlace == BellPlace::statusBar) return {"bell", Health::good, "Status icons are shown" + by + "."};
  if (found.bellPlace == BellPlace::oldTray)
    return {"bell", Health::good, "Status icons are shown by a tray of the old kind."};
  if (found.bellPlace == BellPlace::shell)
    return {"bell", Health::good, "GNOME Shell shows the bell, with Tollvane's extension."};
  if (found.desktop.find("GNOME") != std::string::npos) {
    return {"bell", Health::bad, "GNOME shows no status icons by itself, so there is no place for the bell.",
            "Turn on Tollvane's extension of GNOME Shell: Tollvane offers it when it starts. Then log in again."};
  }
  return {"bell", Health::bad, "Nothing on this desktop shows status icons, so there is no place for the bell.",
          "Add the item for status icons to your panel. It is often called Status Tray or System Tray."};
}

Finding windowFinding(const Examination& found) {
  switch (found.windowWay) {
    case WindowWay::x11:
      return {"windows", Health::good, "Windows come forward through the X11 window manager."};
    case WindowWay::sway:
      return {"windows", Health::good, "Windows come forward through sway."};
    case WindowWay::kwin:
      return {"windows", Health::good, "Windows come forward through KWin."};
    case WindowWay::shell:
      return {"windows", Health::good, "Windows come forward through Tollvane's extension of GNOME Shell."};
    case WindowWay::others:
      if (found.desktop.find("GNOME") != std::string::npos) {
        return {"windows", Health::note, "GNOME lets no program bring another's windows forward.",
                "Turn on Tollvane's extension of GNOME Shell."};
      }
      return {"windows", Health::note,
              "Windows come forward if the compositor lists its windows for programs, as most do but GNOME."};
    case WindowWay::none:
      break;
  }
  return {"windows", Health::bad, "No desktop and no window manager were found, so no window can be brought forward.",
          "Run this command in a terminal of your desktop."};
}

// The manifest that counts: the user's own, and without it the one for all users.
ManifestState manifestThatCounts(const ExaminedBrowser& browser) {
  return browser.ownManifest == ManifestState::none ? browser.systemManifest : browser.ownManifest;
}

Finding unlinkedFinding(const ExaminedBrowser& browser, const Examination& found, Finding finding) {
  switch (manifestThatCounts(browser)) {
    case ManifestState::none:
      finding.health = Health::bad;
      finding.sentence += "it does not know Tollvane's bridge.";
      finding.mend = "Start Tollvane again while the browser is installed.";
      return finding;
    case ManifestState::noBridge:
      finding.health = Health::bad;
      finding.sentence += "the bridge that it is to start is not there.";
      finding.mend = "Start Tollvane again, which repairs this.";
      return finding;
    case ManifestState::unreadable:
      finding.health = Health::bad;
      finding.sentence += "the file that names the bridge is damaged, or is not for this extension.";
      finding.mend = "Start Tollvane again, which writes it anew.";
      return finding;
    case ManifestState::right:
      break;
  }
  if (!browser.isRunning) {
    finding.sentence += "it can start Tollvane's bridge. It does not run now.";
  } else if (!found.running) {
    finding.sentence += "it can start Tollvane's bridge. Tollvane does not run, so nothing is linked.";
  } else {
    finding.health = Health::note;
    finding.sentence += "it runs, but the extension is not linked.";
    finding.mend =
        "Look whether Tollvane is among the browser's extensions and is turned on. If it has just been installed, "
        "start the browser again. Otherwise docs/extension.md says how to add it.";
  }
  return finding;
}

Finding browserFinding(const ExaminedBrowser& browser, const Examination& found) {
  Finding finding{"browser " + browser.bundleID, Health::good, browser.name + ": "};
  std::string links;
  if (found.running) {
    for (const ExaminedExtension& extension : found.running->extensions) {
      if (extension.bundleID != browser.bundleID) continue;
      links += (links.empty() ? "the extension " : ", ") + extension.version +
               (extension.lastReport.empty() ? " (no report yet)" : " (last report on " + extension.lastReport + ")");
    }
  }
  if (!links.empty()) {
    finding.sentence += links + " is linked.";
    return finding;
  }
  const auto& ways = browser.packagings;
  const bool confined = !ways.empty() && std::ranges::count(ways, BrowserPackaging::ordinary) == 0;
  if (!confined) return unlinkedFinding(browser, found, std::move(finding));
  finding.health = Health::note;
  finding.sentence += std::string("it was installed as a ") +
                      (ways.front() == BrowserPackaging::snap ? "Snap" : "Flatpak") +
                      ", which cannot start Tollvane's bridge, so its tabs cannot be named.";
  finding.mend = "Use the package of your distribution or of the browser's maker.";
  return finding;
}

std::vector<Finding> browserFindings(const Examination& found) {
  std::vector<Finding> findings;
  for (const ExaminedBrowser& browser : found.browsers) findings.push_back(browserFinding(browser, found));
  if (findings.empty())
    findings.push_back({"browsers", Health::note, "No browser was found for which Tollvane has an extension."});
  return findings;
}

Finding loginFinding(const Examination& found) {
  switch (found.login) {
    case LoginStatus::enabled:
      return {"login", Health::good, "Tollvane starts when you log in."};
    case LoginStatus::requiresApproval:
      return {"login", Health::note, "Tollvane does not start when you log in: the desktop's settings turn it off.",
              "Turn it on among the startup applications there."};
    case LoginStatus::notRegistered:
    case LoginStatus::notFound:
      break;
  }
  return {"login", Health::note, "This Tollvane does not start when you log in.",
          "If you want that, turn it on in Tollvane's settings."};
}

Finding updateFinding(const Bundle& bundle) {
  if (hasSite(bundle)) return {"updates", Health::good, "Tollvane asks " + sitePage(bundle, "") + " for new releases."};
  return {"updates", Health::note, "This build asks no site for new releases."};
}

std::vector<Finding> fileFindings(const Examination& found) {
  if (!found.home) {
    return {{"home", Health::bad, "This user has no home directory, so Tollvane cannot run.",
             "Log in as a user with a home directory."}};
  }
  const std::string folder = shown(found.supportFolder, found);
  std::vector<Finding> findings;
  if (found.supportFolderIsWritable) {
    findings.push_back({"history", Health::good, "The history is written to " + folder + "."});
  } else {
    findings.push_back({"history", Health::bad, "Tollvane cannot write to " + folder + ", so it keeps no history.",
                        "Make sure that the folder is yours, and that the disk is neither full nor read-only."});
  }
  const std::string settings = shown(found.settingsFile, found);
  if (found.settingsAreReadable) {
    findings.push_back({"settings", Health::good, "The settings are in " + settings + "."});
  } else {
    findings.push_back({"settings", Health::bad, "The settings in " + settings + " cannot be read.",
                        "Make the file readable, or remove it; then the usual settings count."});
  }
  return findings;
}

std::string_view word(Health health) {
  switch (health) {
    case Health::good:
      return "good";
    case Health::note:
      return "note";
    case Health::bad:
      break;
  }
  return "bad";
}

// `text` broken between words; `lead` before its first line, as many blanks before the others.
std::string wrapped(std::string_view lead, std::string_view text) {
  std::string result;
  std::string line(lead);
  bool isEmpty = true;
  while (!text.empty()) {
    const std::string_view next = text.substr(0, text.find(' '));
    text.remove_prefix(std::min(text.size(), next.size() + 1));
    if (!isEmpty && line.size() + 1 + next.size() > widest) {
      result += line + "\n";
      line.assign(lead.size(), ' ');
      isEmpty = true;
    }
    if (!isEmpty) line += ' ';
    line += next;
    isEmpty = false;
  }
  return result + line + "\n";
}

}  // namespace

std::vector<Finding> diagnose(const Examination& examination, const Bundle& bundle) {
  const std::string version = bundle.infoString("CFBundleShortVersionString").value_or("");
  std::vector<Finding> findings = {programFinding(examination), runningFinding(examination, version),
                                   soundFinding(examination), lastSoundFinding(examination)};
  if (examination.hasSessionBus) {  // without it, nothing is known about these
    findings.push_back(notificationFinding(examination));
    findings.push_back(bellFinding(examination));
    findings.push_back(windowFinding(examination));
  }
  const auto add = [&](std::vector<Finding> more) {
    for (Finding& finding : more) findings.push_back(std::move(finding));
  };
  add(browserFindings(examination));
  findings.push_back(loginFinding(examination));
  findings.push_back(updateFinding(bundle));
  add(fileFindings(examination));
  // Names and paths come from outside.
  for (Finding& finding : findings) {
    finding.sentence = text::withoutControls(finding.sentence);
    finding.mend = text::withoutControls(finding.mend);
  }
  return findings;
}

bool isHealthy(const std::vector<Finding>& findings) {
  return std::ranges::none_of(findings, [](const Finding& finding) { return finding.health == Health::bad; });
}

std::string asText(const std::vector<Finding>& findings, std::string_view version) {
  std::string text = "Tollvane " + std::string(version) + " on this computer\n\n";
  for (const Finding& finding : findings) {
    const std::string_view mark = finding.health == Health::good   ? "  ok    "
                                  : finding.health == Health::note ? "  note  "
                                                                   : "  BAD   ";
    text += wrapped(mark, finding.sentence);
    if (!finding.mend.empty()) text += wrapped("        -> ", finding.mend);
  }
  const auto bad = std::ranges::count(findings, Health::bad, &Finding::health);
  text += bad == 0   ? "\nNothing is wrong.\n"
          : bad == 1 ? "\nOne thing is wrong. The line after \"->\" says what to do.\n"
                     : "\n" + std::to_string(bad) + " things are wrong. The lines after \"->\" say what to do.\n";
  return text;
}

std::string asJson(const std::vector<Finding>& findings, std::string_view version) {
  nlohmann::json list = nlohmann::json::array();
  for (const Finding& finding : findings) {
    nlohmann::json one = {
        {"subject", finding.subject}, {"health", word(finding.health)}, {"sentence", finding.sentence}};
    if (!finding.mend.empty()) one["mend"] = finding.mend;
    list.push_back(std::move(one));
  }
  return json::pretty({{"version", version}, {"healthy", isHealthy(findings)}, {"findings", std::move(list)}}) + "\n";
}

}  // namespace tollvane
