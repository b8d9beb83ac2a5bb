"""Simulated printers, for tests in the private network."""

import json
import os
import socket
import subprocess
import time
from pathlib import Path

import pytest

BIN = Path(os.environ["NUV_BIN"])


class Simulator:
    """nuvsim with these printers; `tell` is its control connection."""

    def __init__(self, folder, *printers):
        config = folder / "printers.json"
        config.write_text(json.dumps({"printers": printers}))
        self.process = subprocess.Popen([BIN / "nuvsim", "--config", config, "--control", "7001", "--job-dir", folder],
                                        stdout=subprocess.PIPE, text=True)
        while self.process.stdout.readline().strip() != "ready":
            assert self.process.poll() is None
        self._control = socket.create_connection(("127.0.0.1", 7001)).makefile("rw")

    def tell(self, do, **rest):
        self._control.write(json.dumps({"do": do, **rest}) + "\n")
        self._control.flush()
        answer = json.loads(self._control.readline())
        assert "error" not in answer, answer
        return answer

    def commits(self, kind, **rest):
        self.tell("fault", fault={"kind": kind, **rest})

    def status(self, printer=0):
        return self.tell("status")["printers"][printer]

    def until(self, condition):
        """Until that holds of the first printer's status."""
        end = time.monotonic() + 20
        while not condition(self.status()):
            assert time.monotonic() < end
            time.sleep(0.02)

    def close(self):
        self._control.close()
        self.process.terminate()
        self.process.wait()


@pytest.fixture
def lab(tmp_path):
    """Starts a Simulator, once; a printer of which nothing is said is at 127.0.0.1."""
    started = []

    def start(*printers):
        started.append(Simulator(tmp_path, *(printers or ({},))))
        return started[0]

    def first(**printer):
        return start({"address": "127.0.0.1", "serial": "SN1", **printer})

    start.one = first
    yield start
    for simulator in started:
        simulator.close()


@pytest.fixture
def crown(tmp_path):
    """Makes a print file of so many lines."""

    def make(lines=3):
        (tmp_path / "lines").write_text("G1 X1\n" * lines)
        path = tmp_path / "crown é.nuv"
        subprocess.run([BIN / "nuvfile", "create", "--machine-id", "3DPSNKG53WTW00001", tmp_path / "lines", path],
                       check=True, stdout=subprocess.DEVNULL)
        return path

    return make
