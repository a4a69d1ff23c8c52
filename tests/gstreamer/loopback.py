"""What the scripts that run pipelines share: the commands of docs/gstreamer.md, and a stream over loopback UDP."""

import re
import socket
import threading
import time


def described_pipelines(source):
    """Every command of gst-launch-1.0 in the page, one line each."""
    with open(f"{source}/docs/gstreamer.md", encoding="utf-8") as page:
        blocks = re.findall(r"```sh\n(.*?)```", page.read(), re.DOTALL)
    lines = "".join(blocks).replace("\\\n", " ").splitlines()
    return [" ".join(line.split()) for line in lines if line.startswith("gst-launch-1.0")]


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


class Stream:
    """Sends a clip to a port in real time and keeps what comes back at another."""

    def __init__(self, clip, seconds):
        with open(clip, "rb") as file:
            self.clip = file.read()
        self.seconds = seconds
        self.to = free_port()
        self.receiver = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.receiver.bind(("127.0.0.1", 0))
        self.receiver.settimeout(0.2)
        self.back = self.receiver.getsockname()[1]
        self.came = bytearray()
        self.arrivals = []  # seconds
        self.going = True
        self.threads = [threading.Thread(target=work) for work in (self.send, self.receive)]
        for thread in self.threads:
            thread.start()

    def somebody_listens(self):
        with open("/proc/net/udp", encoding="ascii") as sockets:
            return f":{self.to:04X} " in sockets.read()

    def send(self):
        # Who comes later misses the only key picture.
        while self.going and not self.somebody_listens():
            time.sleep(0.05)
        datagram = 7 * 188
        began = time.monotonic()
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as sender:
            for place in range(0, len(self.clip), datagram):
                due = began + self.seconds * place / len(self.clip)
                time.sleep(max(0.0, due - time.monotonic()))
                if not self.going:
                    return
                sender.sendto(self.clip[place:place + datagram], ("127.0.0.1", self.to))

    def receive(self):
        while self.going:
            try:
                self.came += self.receiver.recv(65536)
                self.arrivals.append(time.monotonic())
            except socket.timeout:
                pass

    def stop(self):
        self.going = False
        for thread in self.threads:
            thread.join()
        self.receiver.close()
        return bytes(self.came)

    def at_own_ports(self, command):
        """The page's command, between this stream's two ends."""
        return command.replace("port=5000", f"port={self.to}").replace("port=5001", f"port={self.back}")
