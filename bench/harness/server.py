# SPDX-License-Identifier: MIT
"""A web server on this machine that has everything that the launcher downloads, over HTTP, TLS and HTTP/2."""

import json
import os
import socket
import subprocess
import time

from harness import content

CONFIGURATION = """
daemon off;
worker_processes 1;
pid {folder}/nginx.pid;
error_log {folder}/error.log;
events {{ }}
http {{
  access_log off;
  sendfile on;
  types {{ }}
  client_body_temp_path {folder}/body;
  proxy_temp_path {folder}/proxy;
  fastcgi_temp_path {folder}/fastcgi;
  uwsgi_temp_path {folder}/uwsgi;
  scgi_temp_path {folder}/scgi;
  server {{
    listen 127.0.0.1:{plain};
    listen 127.0.0.1:{secure} ssl;
    listen 127.0.0.1:{second} ssl http2;
    ssl_certificate {folder}/server.pem;
    ssl_certificate_key {folder}/server.key;
    root {content};
    location = /quillet64 {{ default_type text/html; alias {folder}/page.html; }}
    location = /repos/ares-emulator/ares/releases/latest {{
      default_type application/json; alias {folder}/latest.json;
    }}
    location /quillet64/file/ {{
      default_type application/json;
      return 200 '{{"url": "http://127.0.0.1:{plain}/Quillet64.z64"}}';
    }}
  }}
}}
"""

PAGE = """<form><input type="hidden" name="csrf_token" value="abc"></form>
<strong class="name">Quillet64.z64</strong> <a data-upload_id="1">Download</a>
"""


class Server:
    """Runs until the scope of the place ends. The folder's files are served by their names."""

    def __init__(self, place, name):
        self.place = place
        self.folder = place.work / f"server-{name}"
        self.folder.mkdir()
        self.plain, self.secure, self.second = free_ports(3)
        self.certificate = self.folder / "server.pem"
        archive = content.make_release(place)
        content.make_game(place)
        self._write("page.html", PAGE)
        self._write("latest.json", json.dumps({"tag_name": "v148", "assets": [
            {"name": archive.name, "size": archive.stat().st_size,
             "browser_download_url": self.address(archive.name)}]}))
        self._write("nginx.conf", CONFIGURATION.format(
            folder=self.folder, content=archive.parent, plain=self.plain, secure=self.secure, second=self.second))
        place.run("openssl", "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2",
                  "-subj", "/CN=127.0.0.1", "-addext", "subjectAltName=IP:127.0.0.1",
                  "-keyout", str(self.folder / "server.key"), "-out", str(self.certificate),
                  stderr=subprocess.DEVNULL)
        # Files that were made by this user are to be readable by the server, whoever this user is.
        user = ["-g", "user root;"] if os.getuid() == 0 else []
        self.process = place.start("nginx", "-e", str(self.folder / "error.log"), "-c",
                                   str(self.folder / "nginx.conf"), *user, stderr=subprocess.DEVNULL)
        self._wait()

    def address(self, name, protocol="HTTP"):
        ports = {"HTTP": self.plain, "TLS": self.secure, "HTTP/2": self.second}
        return f"http{'' if protocol == 'HTTP' else 's'}://127.0.0.1:{ports[protocol]}/{name}"

    def variables(self):
        """What tells the wired programs of this server."""
        return {"BENCH_ORIGIN": f"http://127.0.0.1:{self.plain}", "BENCH_CERTIFICATE": str(self.certificate)}

    def stop(self):
        self.place.end(self.process)

    def _write(self, name, text):
        (self.folder / name).write_text(text)

    def _wait(self):
        end = time.monotonic() + 10
        while time.monotonic() < end and self.process.poll() is None:
            try:
                socket.create_connection(("127.0.0.1", self.secure), timeout=1).close()
                return
            except ConnectionRefusedError:
                time.sleep(0.05)
        log = self.folder / "error.log"
        raise RuntimeError(f"nginx does not answer: {log.read_text() if log.exists() else ''}")


def free_ports(count):
    sockets = [socket.create_server(("127.0.0.1", 0)) for _ in range(count)]
    ports = [each.getsockname()[1] for each in sockets]
    for each in sockets:
        each.close()
    return ports
