#!/usr/bin/env python3
"""Makes the recordings in this folder again.

    record.py PROGRAM [NAME...]     needs root; PROGRAM is a staylit

Each recording is made on a machine of its own: in namespaces in which there is nothing but a system
bus, logind, the program and the work. The grace period is 30 s. The work begins 40 s after the
program and ends 90 s after it; the recording ends 130 s after it. `quiet` and `asking` are shorter.
"""
import http.server
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import threading
import time

HERE = pathlib.Path(__file__).resolve().parent
SETTINGS = "graceSeconds = 30\n"
BUS = """<busconfig><type>system</type><listen>unix:path={socket}</listen><auth>EXTERNAL</auth>
<policy context="default"><allow user="*"/><allow send_destination="*" eavesdrop="true"/>
<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>"""
BURSTS = """import time
while True:
    end = time.time() + 1
    while time.time() < end: pass
    time.sleep(5)
"""


class Server(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        self.send_response(200)
        self.end_headers()
        try:
            while True:
                self.wfile.write(bytes(40_000))
                time.sleep(0.1)
        except OSError:
            pass

    def do_PUT(self):
        self.send_response(100)
        self.end_headers()
        while self.rfile.read1(1 << 16):
            pass

    def log_message(self, *_):
        pass


def serve():
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 8000), Server)
    threading.Thread(target=server.serve_forever, daemon=True).start()


def shell(text):
    return ["sh", "-c", text]


def sources(folder, count, functions):
    for index in range(count):
        (folder / f"unit{index}.cpp").write_text("".join(
            f"int f{n}(int x) {{ int v = {index}; while (x--) v = v * 31 + x % {n + 2}; return v; }}\n"
            for n in range(functions)))


def compile_with_ninja(folder):
    sources(folder, 400, 250)
    rules = "".join(f"build unit{index}.o: compile unit{index}.cpp\n" for index in range(400))
    (folder / "build.ninja").write_text(
        "rule compile\n  command = g++ -O2 -c $in -o $out\n" + rules)
    return ["ninja", "-j2", "-C", str(folder)]


def short_commands(folder):
    return shell("while :; do ls -l /usr/bin >/dev/null; wc -c /usr/bin/g* >/dev/null 2>&1; done")


def checksums(folder):
    (folder / "large").write_bytes(bytes(1 << 28))
    return ["sha256sum"] + [str(folder / "large")] * 1000


def copy_to_disk(folder):
    return shell("while :; do head -c 2000000 /dev/zero; sleep 0.5; done | "
                 f"dd of={folder}/copy bs=100k iflag=fullblock oflag=dsync status=none")


def download(_):
    serve()
    return ["curl", "-s", "-o", "/dev/null", "http://127.0.0.1:8000/"]


def upload(folder):
    serve()
    (folder / "large").write_bytes(bytes(1 << 26))
    return ["curl", "-s", "--limit-rate", "300k", "-T", str(folder / "large"), "-o", "/dev/null",
            "http://127.0.0.1:8000/"]


def compress(folder):
    with open(folder / "large", "wb") as large:
        for _ in range(256):
            large.write(os.urandom(1 << 19) + bytes(1 << 19))
    return shell(f"while :; do zstd -q -19 -T1 -c {folder}/large >/dev/null; done")


def bursts(_):
    return ["python3", "-c", BURSTS]


def asking(_):
    return ["systemd-inhibit", "--what=idle", "--who=Backup", "--why=It copies", "sleep", "1000"]


def nothing(_):
    return None


# Name, what works, and when it begins, ends and the recording ends.
RECORDINGS = {
    "ninja": (compile_with_ninja, 40, 90, 130),
    "short-commands": (short_commands, 40, 90, 130),
    "checksums": (checksums, 40, 90, 130),
    "copy-to-disk": (copy_to_disk, 40, 90, 130),
    "download": (download, 40, 90, 130),
    "upload": (upload, 40, 90, 130),
    "compress": (compress, 40, 90, 130),
    "bursts": (bursts, 40, 90, 130),
    "asking": (asking, 40, 60, 100),
    "quiet": (nothing, 0, 0, 60),
}


def inside(program, name, folder):
    subprocess.run(["ip", "link", "set", "lo", "up"], check=True)
    work, begins, ends, length = RECORDINGS[name]
    (folder / "bus.conf").write_text(BUS.format(socket=folder / "bus"))
    (folder / "config/staylit").mkdir(parents=True)
    (folder / "config/staylit/settings.toml").write_text(SETTINGS)
    address = f"unix:path={folder}/bus"
    os.environ.update(DBUS_SYSTEM_BUS_ADDRESS=address, XDG_CONFIG_HOME=str(folder / "config"),
                      DBUS_SESSION_BUS_ADDRESS=f"unix:path={folder}/none")
    children = [subprocess.Popen(["dbus-daemon", "--nofork", "--nopidfile",
                                  f"--config-file={folder}/bus.conf"])]
    time.sleep(1)
    (folder / "state").mkdir()
    children.append(subprocess.Popen(
        ["unshare", "-m", "sh", "-c",
         f"mount --bind {folder}/state /run/systemd && exec /lib/systemd/systemd-logind"],
        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL))
    command = work(folder)
    time.sleep(4)
    start = time.time()
    recorder = subprocess.Popen([program, "--record", str(HERE / f"{name}.tape")],
                                stdout=subprocess.DEVNULL)
    if command:
        time.sleep(begins)
        worker = subprocess.Popen(command, stdout=subprocess.DEVNULL, start_new_session=True)
        time.sleep(start + ends - time.time())
        os.killpg(worker.pid, signal.SIGKILL)
        worker.wait()
    time.sleep(start + length - time.time())
    recorder.terminate()
    recorder.wait()
    for child in children:
        child.kill()


def main():
    if sys.argv[1] == "--inside":
        inside(sys.argv[2], sys.argv[3], pathlib.Path(sys.argv[4]))
        return
    for name in sys.argv[2:] or RECORDINGS:
        (HERE / f"{name}.tape").unlink(missing_ok=True)
        folder = tempfile.mkdtemp(prefix="recording-")
        try:
            subprocess.run(["unshare", "--pid", "--fork", "--mount-proc", "--net", "--kill-child",
                            sys.executable, __file__, "--inside", sys.argv[1], name, folder],
                           check=True)
        finally:
            shutil.rmtree(folder, ignore_errors=True)


main()
