"""Runs the pipelines of docs/gstreamer.md as they stand there, under GStreamer's leaks tracer. Screens, cameras and ports
are replaced; what needs a device or a server that tests have not is named on the list below and nowhere else.
  documented_pipelines_test.py SOURCE_DIR PROGRAM ELEMENT_FOLDER"""

import os
import re
import shlex
import signal
import subprocess
import sys
import tempfile
import threading

from loopback import Stream, described_pipelines

SOURCE, PROGRAM, ELEMENTS = (os.path.abspath(path) for path in sys.argv[1:4])
# The muxer's, of GStreamer 1.22, when a GAP of the telemetry comes before its segment.
KNOWN = "gst_segment_clip: assertion 'segment->format == format' failed"
NOT_RUN = {"rtspsrc": "there is no RTSP server to ask"}
SECONDS = 6


def run(command, stop_after=None):
    """Runs it to its end, or ends it as a person does. Its messages must tell of no leak and no fault."""
    environment = dict(os.environ, GST_PLUGIN_PATH=ELEMENTS, GST_TRACERS="leaks", GST_DEBUG="GST_TRACER:7",
                       GST_DEBUG_NO_COLOR="1", GST_REGISTRY=os.path.join(os.getcwd(), "registry.bin"))
    process = subprocess.Popen(shlex.split(command), env=environment, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                               text=True)
    if stop_after:
        threading.Timer(stop_after, process.send_signal, [signal.SIGINT]).start()
    output, _ = process.communicate(timeout=120)
    assert "object-alive.class" in output, f"the tracer was not there:\n{output}"
    leaks = re.findall(r"object-alive, type-name=\(string\)(?!%s).*", output)
    assert not leaks, "\n".join(leaks)
    faults = [line for line in output.splitlines() if re.search("ERROR|WARNING|CRITICAL", line) and KNOWN not in line]
    assert process.returncode == 0 and not faults, output


def program(*arguments):
    return subprocess.run([PROGRAM, *arguments], check=True, capture_output=True, text=True).stdout


def check_annotated(clip):
    """It has a second of pictures at least."""
    program("frame", clip, "-c", "examples/corner_line.json", "--at", "1", "-o", "picture.png")
    assert os.path.getsize("picture.png") > 1000


def on_the_screen(command):
    run(command.replace("autovideosink", "fakesink"))


def file_to_file(command):
    run(command)
    check_annotated("annotated.ts")
    assert program("keys", "annotated.ts").count("heading_deg") > 10 * SECONDS


def udp(command):
    stream = Stream("flight.ts", SECONDS)
    run(stream.at_own_ports(command), stop_after=SECONDS + 5)
    with open("received.ts", "wb") as file:
        file.write(stream.stop())
    print(f"{os.path.getsize('received.ts')} bytes came back", flush=True)
    check_annotated("received.ts")


def camera(command):
    run(command.replace("v4l2src", "videotestsrc is-live=true num-buffers=60").replace("autovideosink", "fakesink"))


WAYS = [("-e filesrc", file_to_file), ("filesrc", on_the_screen), ("udpsrc", udp), ("v4l2src", camera)]


def main():
    pipelines = described_pipelines(SOURCE)
    seen = set()
    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        os.symlink(f"{SOURCE}/examples", "examples")
        program("sample", "flight.ts", "--seconds", str(SECONDS), "--size", "640x360", "--fps", "25")
        for command in pipelines:
            begin = command.removeprefix("gst-launch-1.0 ")
            device = next((name for name in NOT_RUN if begin.startswith(name)), None)
            if device:
                print(f"not run, {NOT_RUN[device]}: {command}")
                continue
            name, way = next((name, way) for name, way in WAYS if begin.startswith(name))
            print(f"running: {command}", flush=True)
            way(command)
            seen.add(name)
        os.chdir("/")
    assert seen == {name for name, _ in WAYS}, f"the page lost one: {seen}"


main()
