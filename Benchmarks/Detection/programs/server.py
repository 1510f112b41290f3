"""Serves a folder over loopback, "/endless" without end as fast as it is taken, and without end at
150 KB/s, like a slow line: "/slow" evenly, "/bursts" once a second, "/gaps" once in five seconds.
Prints its port.

    server.py FOLDER
"""
import functools
import http.server
import sys
import time

CHUNK = bytes(1 << 20)
STREAMS = {"/endless": (CHUNK, 0), "/slow": (bytes(15 << 10), 0.1), "/bursts": (bytes(150 << 10), 1),
           "/gaps": (bytes(750 << 10), 5)}  # What is sent at once, and the pause after it.


class Handler(http.server.SimpleHTTPRequestHandler):
    def do_GET(self):
        if self.path in STREAMS:
            self.send_endlessly(*STREAMS[self.path])
        else:
            super().do_GET()

    def send_endlessly(self, piece, pause):
        self.send_response(200)
        self.end_headers()
        try:
            while True:
                self.wfile.write(piece)
                time.sleep(pause)
        except OSError:
            """The client has ended."""

    def log_message(self, *_):
        pass


class Server(http.server.ThreadingHTTPServer):
    def handle_error(self, *_):
        """A client that was ended in the middle is no error here."""


server = Server(("127.0.0.1", 0), functools.partial(Handler, directory=sys.argv[1]))
print(server.server_port, flush=True)
server.serve_forever()
