"""A local web server with one page. Its playSound() and stopSound() make a sound; ?title=... sets its title, and with
&play it plays at once."""

import http.server
import threading

PAGE = b'''<!DOCTYPE html>
<html><head><meta charset="utf-8"><title></title></head><body><script>
document.title = new URLSearchParams(location.search).get('title') ?? '';
let context;
function playSound() {
  context = new AudioContext();
  const tone = new OscillatorNode(context, {frequency: 440});
  tone.connect(new GainNode(context, {gain: 0.05})).connect(context.destination);
  tone.start();
}
function stopSound() { context.close(); }
if (new URLSearchParams(location.search).has('play')) playSound();
</script></body></html>'''


class Pages:
    def __init__(self):
        self._server = http.server.ThreadingHTTPServer(('127.0.0.1', 0), _Handler)
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    def address(self, title, host='127.0.0.1'):
        return f'http://{host}:{self._server.server_port}/?title={title}'

    def close(self):
        self._server.shutdown()
        self._server.server_close()


class _Handler(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.send_response(200)
        self.send_header('Content-Type', 'text/html')
        self.end_headers()
        self.wfile.write(PAGE)

    def log_message(self, *_):
        pass
