"""Tests of a host against a simulated printer: nuvsim on the PATH, pytest, no hardware and no network."""

import subprocess

import nuvprinter
import pytest


class Lab:
    """Simulated printers on loopback, which end with the test."""

    def __init__(self):
        self.simulators = []

    def printer(self, *options):
        """One that was started with these options of nuvsim, opened."""
        command = ["nuvsim", "--address", "127.0.0.1", *options]
        simulator = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.simulators.append(simulator)
        assert "ready\n" in simulator.stdout
        return nuvprinter.Printer.open_address("127.0.0.1")

    def close(self):
        for simulator in self.simulators:
            simulator.terminate()
            simulator.communicate()


@pytest.fixture
def lab():
    made = Lab()
    yield made
    made.close()


def test_a_printer_says_who_it_is(lab):
    with lab.printer("--serial", "SN1", "--model", "BEGO VARSEO XS") as printer:
        assert printer.get_identity().serial == "SN1"


def test_a_printer_that_says_nothing_is_given_up(lab):
    with lab.printer("--fault", "silent,code=102,count=-1") as printer:
        with pytest.raises(nuvprinter.Error) as failed:
            printer.get_state(nuvprinter.Call(time_limit=0.5))
        assert failed.value.reason == nuvprinter.Result.TIME_LIMIT


def test_one_late_answer_is_waited_for(lab):
    with lab.printer("--fault", "late,code=102,ms=300") as printer:
        assert printer.get_state().state == nuvprinter.PrinterState.IDLE
