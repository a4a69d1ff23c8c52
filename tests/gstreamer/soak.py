"""Runs the page's UDP pipeline and tells its memory and its stalls.
  soak.py SOURCE_DIR PROGRAM ELEMENT_FOLDER SECONDS"""

import os
import shlex
import signal
import subprocess
import sys
import tempfile
import time

from loopback import Stream, described_pipelines

SOURCE, PROGRAM, ELEMENTS = (os.path.abspath(path) for path in sys.argv[1:4])
SECONDS = int(sys.argv[4])
SETTLED = min(20, SECONDS // 2)  # seconds
STALL = 1.0  # seconds without a datagram


def resident_mib(process):
    with open(f"/proc/{process.pid}/status", encoding="ascii") as status:
        return next(int(line.split()[1]) for line in status if line.startswith("VmRSS")) / 1024


def main():
    command = next(line for line in described_pipelines(SOURCE) if line.startswith("gst-launch-1.0 udpsrc"))
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.symlink(f"{SOURCE}/examples", "examples")
        subprocess.run([PROGRAM, "sample", "flight.ts", "--seconds", str(SECONDS + 10), "--size", "640x360", "--fps", "25"],
                       check=True, capture_output=True)
        stream = Stream("flight.ts", SECONDS + 10)
        process = subprocess.Popen(shlex.split(stream.at_own_ports(command)), stdout=subprocess.DEVNULL,
                                   stderr=subprocess.DEVNULL, env=dict(os.environ, GST_PLUGIN_PATH=ELEMENTS))
        memory = []
        began = time.monotonic()
        while time.monotonic() < began + SECONDS and process.poll() is None:
            time.sleep(1)
            memory.append(resident_mib(process))
        died = process.poll() is not None
        process.send_signal(signal.SIGINT)
        process.wait(30)
        came = stream.stop()
        os.chdir("/")
    memory = memory[SETTLED:]
    pauses = [after - before for before, after in zip(stream.arrivals, stream.arrivals[1:])]
    print(f"{SECONDS} seconds of 640x360 at 25 pictures per second. Resident MiB: after {SETTLED} s {memory[0]:.1f}, "
          f"least {min(memory):.1f},\nmost {max(memory):.1f}, at the end {memory[-1]:.1f}. Stalls of more than {STALL:.0f} s "
          f"in what comes out: {sum(pause > STALL for pause in pauses)};\nlongest pause {max(pauses):.2f} s, "
          f"{len(came) / 1e6:.1f} MB came out, the last {max(0.0, began + SECONDS - stream.arrivals[-1]):.1f} s before the end.")
    sys.exit("the pipeline ended by itself" if died else 0)


main()
