# A browser with Tollvane's extension, and a page that plays when it is opened. demo.sh sources this after
# tests/session/client.sh. The browser has its own profile in the private session.
# shellcheck shell=bash disable=SC2154,SC2034

page_title="Evening news"

# Prints the first browser that is installed, if any. Without python3, which serves the page, prints nothing.
demo_browser() {
  command -v python3 >/dev/null || return 0
  local program
  for program in chromium firefox-esr; do
    if command -v "$program" >/dev/null; then
      echo "$program"
      return
    fi
  done
}

# serve_page SOUND: serves a page that plays the file SOUND, at $page_address.
serve_page() {
  local port
  mkdir "$root/page"
  cp "$1" "$root/page/sound.wav"
  cat >"$root/page/index.html" <<END
<!DOCTYPE html>
<html><head><meta charset="utf-8"><title>$page_title</title></head>
<body><audio src="sound.wav" autoplay onended="this.src = ''"></audio></body></html>
END
  start page python3 -u -m http.server --bind 127.0.0.1 --directory "$root/page" 0
  require 10 "the page's server" grep -q "port [0-9]" "$log/page.log"
  port=$(sed -n 's/.* port \([0-9]*\) .*/\1/p' "$log/page.log")
  page_address=http://localhost:$port/
}

# start_browser PROGRAM EXTENSIONS: starts a browser with an empty page. Sets browser_command and browser_pid.
start_browser() {
  local profile=$root/browser
  case $1 in
    chromium)
      browser_command=(chromium --disable-gpu --no-first-run --disable-background-networking --disable-sync
        --disable-component-update --password-store=basic --load-extension="$2/chromium"
        --autoplay-policy=no-user-gesture-required)
      [ "$(id -u)" != 0 ] || browser_command+=(--no-sandbox)
      ;;
    firefox-esr)
      browser_command=(firefox-esr --profile "$profile")
      write_firefox_profile "$profile" "$2"
      ;;
  esac
  start browser "${browser_command[@]}" about:blank
  browser_pid=$!
}

write_firefox_profile() {
  mkdir -p "$1/extensions"
  cp "$2/firefox/tollvane.xpi" "$1/extensions/tollvane@quarnel.com.xpi"
  cat >"$1/user.js" <<END
user_pref("xpinstall.signatures.required", false);
user_pref("extensions.autoDisableScopes", 0);
user_pref("media.autoplay.default", 0);
user_pref("media.autoplay.blocking_policy", 0);
user_pref("browser.shell.checkDefaultBrowser", false);
user_pref("browser.aboutwelcome.enabled", false);
user_pref("datareporting.policy.dataSubmissionEnabled", false);
user_pref("app.update.enabled", false);
END
}

# browser_tab: opens the page in a new tab. The browser is started once more, which hands the page to the running one.
browser_tab() { timeout 60 "${browser_command[@]}" "$page_address"; }

# Whether a bridge is connected. A listening socket is in state 01, a connected one in 03.
browser_is_linked() { grep -q " 03 *[0-9]* $home/.local/share/Tollvane/bridge.sock\$" /proc/net/unix; }
