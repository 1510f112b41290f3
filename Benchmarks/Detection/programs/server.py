"""Serves a folder over loopback, "/endless" without end as fast as it is taken, and "/slow" without
end at 150 KB/s, like a slow line. Prints its port.

    server.py FOLDER
"""
import functools
import http.server
import sys
import time

CHUNK = bytes(1 << 20)
PIECE = bytes(15 << 10)  # Ten a second.


class Handler(http.server.SimpleHTTPRequestHandler):
    def do_GET(self):
        if self.path == "/endless":
            self.send_endlessly(CHUNK, 0)
        elif self.path == "/slow":
            self.send_endlessly(PIECE, 0.1)
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
