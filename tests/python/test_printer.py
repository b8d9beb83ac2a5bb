"""The Python package against simulated printers."""

import asyncio
import contextlib
import gc
import os
import pickle
import signal
import socket
import subprocess
import sys
import threading
from pathlib import Path

import pytest

import nuvprinter as nuv

HERE = "127.0.0.1"


def reason(function, *arguments):
    with pytest.raises(nuv.Error) as error:
        function(*arguments)
    return error.value.reason


def run(script, *arguments):
    """A Python program of its own."""
    return subprocess.Popen([sys.executable, "-c", "import nuvprinter as nuv, sys, time\n" + script, *arguments],
                            stdout=subprocess.PIPE, text=True)


def test_every_question_and_order(lab):
    models = ["Zafel Superfine", "Fabrix120 xP", "Mekrix3400 xP", "BEGO VARSEO XS", "Zafel Superfine EngVer"]
    lab(*({"address": f"127.0.0.{i}", "serial": f"SN{i}", "model": model} for i, model in enumerate(models, 1)))
    with contextlib.ExitStack() as stack:
        laser, android, led, dental, engineer = (
            stack.enter_context(nuv.Printer.open_address(f"127.0.0.{i}")) for i in range(1, 6))
        assert laser.get_identity().serial == "SN1"
        assert laser.get_state().state is nuv.PrinterState.IDLE
        assert f"{laser.get_state().state:>5}" == " idle"
        assert laser.get_job() == nuv.Job(0, 0, 0, 0, None)
        assert laser.get_resin().state is nuv.ResinState.READY
        assert laser.get_resin().open_mode is True
        laser.set_laser_power_percent(75)
        assert laser.get_laser_power_percent() == 75
        laser.set_z_compensation_um(-20)
        assert laser.get_z_compensation_um() == -20
        scaling = nuv.Scaling((1.002, 1.001), (0.998, 1.0), (1.0, 1.0))
        laser.set_scaling(scaling)
        assert laser.get_scaling().x == pytest.approx(scaling.x)
        laser.set_nickname("Labor Süd")
        assert laser.get_identity().nickname == "Labor Süd"
        assert android.get_laser(2).pulse_width[4] == 502
        assert android.get_scan_unit().y_offset == 7
        assert android.get_versions().lcm_panel is not None
        assert android.get_sensors().lid_closed is True
        assert led.get_led_hours() > 0
        assert dental.get_identity().manufactured is not None
        assert engineer.get_job_counts().started == 0
        assert engineer.get_last_read_job() == 0
        assert reason(engineer.set_last_read_job, 9) is nuv.Result.REFUSED
        assert reason(engineer.get_job_record, 1) is nuv.Result.REFUSED
        points = laser.get_access_points()
        assert laser.get_access_point(points[0].name).joined is False
        assert reason(laser.join_access_point, "no such", "wrong") is nuv.Result.REFUSED
        assert laser.get_network(nuv.Port.WIRED).mac is not None
        laser.abandon_job()
        laser.leave_access_point()
        laser.skip_warmup()
        assert laser.raw("F102") == b"F102 OK S:0"
        with pytest.raises(nuv.Error) as refused:
            laser.get_led_hours()
        for error in (refused.value, pickle.loads(pickle.dumps(refused.value))):
            assert (error.command, error.reason, str(error)) == (708, nuv.Result.REFUSED, str(refused.value))
        assert reason(laser.set_nickname, "a\0b") is nuv.Result.INVALID_ARGUMENT
        assert reason(laser.send, "a.nuv\0b") is nuv.Result.INVALID_ARGUMENT
        assert reason(laser.set_laser_power_percent, 2**32 + 50) is nuv.Result.INVALID_ARGUMENT
    assert reason(laser.get_state) is nuv.Result.BAD_HANDLE


def test_finds_printers(lab):
    simulator = lab({"address": HERE, "serial": "SN1"}, {"address": "127.0.0.2", "serial": "SN2"})
    options = nuv.SearchOptions(addresses=f"{HERE} 127.0.0.2")
    assert {found.serial for found in nuv.find(options)} == {"SN1", "SN2"}
    told = []
    first = nuv.SearchOptions(addresses=options.addresses, found=lambda found: told.append(found) or False)
    assert len(nuv.find(first)) == len(told) == 1
    with nuv.Printer.open(told[0]) as printer:
        assert printer.get_identity().serial == told[0].serial
    with nuv.Printer.open_serial("SN2", options) as printer:
        assert printer.get_state()
        assert reason(nuv.Printer.open_address, "127.0.0.2") is nuv.Result.BUSY
    simulator.commits("silent", code=101, count=-1)
    silent = nuv.find(nuv.SearchOptions(addresses=HERE), nuv.Call(time_limit=0.5))
    assert [found.contact for found in silent] == [nuv.Result.NO_ANSWER]
    assert reason(nuv.find, nuv.SearchOptions(addresses="nowhere")) is nuv.Result.INVALID_ARGUMENT

    def stumble(found):
        raise ZeroDivisionError

    with pytest.raises(ZeroDivisionError):
        nuv.find(nuv.SearchOptions(addresses=HERE, addresses_only=True, found=stumble))


def test_sends_and_cancels(lab, crown):
    simulator = lab.one()
    stages = []
    with nuv.Printer.open_address(HERE) as printer:
        path = crown()
        assert printer.check(path).findings == nuv.Finding(0)
        outcome = printer.send(path, nuv.SendOptions(progress=lambda at: stages.append(at.stage)))
        assert outcome and outcome.job_index == 1 and outcome.bytes_sent == 15
        assert {nuv.Stage.CHECKING, nuv.Stage.SENDING} <= set(stages)
        simulator.tell("state", to="idle")
        cancelled = printer.send(crown(30), nuv.SendOptions(progress=lambda at: at.bytes_sent < 20))
        assert not cancelled and cancelled.outcome is nuv.OutcomeKind.CANCELLED
        assert cancelled.reason is nuv.Result.CANCELLED
        assert printer.get_state().state is nuv.PrinterState.IDLE
        # From another thread, while it is sent.
        timer = threading.Timer(0.5, printer.cancel)
        timer.start()
        assert printer.send(crown(100)).outcome is nuv.OutcomeKind.CANCELLED
        timer.join()
        simulator.tell("state", to="error", number=17)
        assert printer.send(path).findings == nuv.Finding.PRINTER_NOT_IDLE
        assert reason(printer.send, path.with_name("none")) is nuv.Result.BAD_FILE
        assert printer.update(nuv.Part.ENGINE, path, call=nuv.Call(5)).findings & nuv.Finding.NO_IMAGE

        def stumble(progress):
            raise ZeroDivisionError

        with pytest.raises(ZeroDivisionError):
            printer.send(path, nuv.SendOptions(progress=stumble))


def test_two_printers_in_threads(lab):
    simulator = lab({"address": HERE}, {"address": "127.0.0.2"})
    simulator.commits("silent", code=102, count=-1)
    ended = []
    with nuv.Printer.open_address(HERE) as silent, nuv.Printer.open_address("127.0.0.2") as other:

        def wait():
            ended.append(reason(silent.get_state))

        thread = threading.Thread(target=wait)
        thread.start()
        for _ in range(100):
            assert other.get_state().state is nuv.PrinterState.IDLE
        assert not ended
        silent.cancel()
        thread.join()
    assert ended == [nuv.Result.CANCELLED]


def test_calls_end_when_nobody_waits_any_more(lab):
    simulator = lab.one()
    with nuv.Printer.open_address(HERE) as printer:
        simulator.commits("silent", code=102, count=-1)
        assert reason(printer.get_state, nuv.Call(time_limit=0.05)) is nuv.Result.TIME_LIMIT
        assert reason(printer.get_state, nuv.Call(still_wanted=lambda: False)) is nuv.Result.CANCELLED
        simulator.tell("unplug")
        assert reason(printer.get_state) in (nuv.Result.LOST, nuv.Result.UNREACHABLE)


@pytest.mark.skipif(os.name != "posix", reason="a signal is sent to the process")
def test_ctrl_c_ends_a_long_call(lab):
    simulator = lab.one()
    simulator.commits("silent", code=102, count=-1)
    # Also one inside a function of another.
    host = run("asks = lambda found: nuv.Printer.open(found).get_state()\n"
               "try: nuv.find(nuv.SearchOptions(addresses='127.0.0.1', found=asks))\n"
               "except KeyboardInterrupt: print('interrupted')")
    simulator.until(lambda status: status["totals"]["faultsApplied"] > 0)
    host.send_signal(signal.SIGINT)
    # Left alone it would wait for 36 s and more.
    assert host.communicate(timeout=20)[0] == "interrupted\n"
    assert host.returncode == 0


def test_watches(lab, crown):
    simulator = lab.one(layerMs=300)
    events = []
    with nuv.Printer.open_address(HERE) as printer:
        printer.send(crown(3))
        with printer.watch(1, lambda event: events.append(event) or event.event != nuv.EventKind.PRINT_ENDED) as watch:
            assert not watch.wait(nuv.Call(time_limit=0.05))
            assert watch.wait()
        assert events[0].state.state in (nuv.PrinterState.PRINTING, nuv.PrinterState.RECEIVING)
        assert events[-1].job_result is nuv.JobResult.FINISHED
        assert events[-1].last_answer is not None

        def stumble(event):
            raise ZeroDivisionError

        with printer.watch(1, stumble) as watch, pytest.raises(ZeroDivisionError):
            watch.wait()
        # A printer that goes away.
        told = threading.Event()
        with printer.watch(1, lambda event: told.set() if event.event == nuv.EventKind.GONE else True):
            simulator.tell("unplug")
            assert told.wait(20)


def test_what_is_collected_waits_for_nothing(lab):
    lab.one()
    lock, inside = threading.Lock(), threading.Event()

    def look(event):
        inside.set()
        with lock:
            return True

    printer = nuv.Printer.open_address(HERE)
    with lock:
        watch = printer.watch(1, look)
        assert inside.wait(20)
        del watch
        gc.collect()
        del printer
        gc.collect()
    # A process may end while it watches.
    for end in ("", "sys.exit(3)", "raise ValueError"):
        host = run("p = nuv.Printer.open_address('127.0.0.1')\n"
                   "w = p.watch(1, lambda event: time.sleep(0.2))\ntime.sleep(0.1)\nsys.stderr = None\n" + end)
        host.communicate(timeout=20)
        assert host.returncode in (0, 1, 3)


def test_the_log_is_told(lab):
    lines = []
    nuv.set_log(nuv.LogLevel.WARNING, lambda level, printer, text: lines.append((level, printer, text)))
    try:
        # A name that is no UTF-8 does not end it.
        with socket.socket(type=socket.SOCK_DGRAM) as printer:
            printer.bind((HERE, 6014))
            answer = b"F195 OK IP=<127.0.0.1> PORT=1 N=<\xfc> M:1 CN:2"
            threading.Thread(target=lambda: printer.sendto(answer, printer.recvfrom(99)[1])).start()
            nuv.find(nuv.SearchOptions(addresses=HERE + ":6014", addresses_only=True))
        assert reason(nuv.Printer.open, nuv.Identity(nuv.Link.NETWORK, HERE, 1)) is nuv.Result.UNREACHABLE
    finally:
        nuv.set_log(nuv.LogLevel.WARNING, None)
    assert any("N=<\ufffd>" in text for _, _, text in lines)
    assert HERE in "".join(lines[-1][1:])
    assert nuv.version().count(".") == 2


def test_in_asyncio_a_cancel_is_passed_on(lab):
    import watch_asyncio  # the example

    simulator = lab.one()
    simulator.commits("silent", code=102, count=-1)

    unexpected = []

    async def host():
        asyncio.get_running_loop().set_exception_handler(lambda _, what: unexpected.append(what))
        with pytest.raises(asyncio.TimeoutError):
            await asyncio.wait_for(watch_asyncio.state_of(HERE), 1)
        gc.collect()
        simulator.tell("clear")
        return await watch_asyncio.state_of(HERE)

    assert asyncio.run(host()).state is nuv.PrinterState.IDLE
    assert not unexpected


def test_lists_on_the_command_line(lab):
    lab.one(model="Fabrix100 xP")
    done = subprocess.run([sys.executable, "-m", "nuvprinter", "list", HERE], stdout=subprocess.PIPE, text=True)
    assert done.stdout.split() == [HERE, "SN1", "Fabrix100", "xP", "idle"]
    assert subprocess.run([sys.executable, "-m", "nuvprinter", "list", HERE + ":6014"]).returncode == 1


def test_the_structures_are_those_of_the_header(tmp_path):
    import ctypes
    from nuvprinter import _native, results

    constants = {kind: f"NUV_{name}_" for kind, name in [
        (results.Result, "RESULT"), (results.Link, "LINK"), (results.PrinterState, "STATE"),
        (results.ResinState, "RESIN_STATE"), (results.Security, "SECURITY"), (results.Port, "PORT"),
        (results.JobResult, "JOB"), (results.Finding, "FINDING"), (results.Stage, "STAGE"),
        (results.OutcomeKind, "OUTCOME"), (results.Part, "PART"), (results.EventKind, "EVENT"),
        (results.LogLevel, "LOG")]}
    wanted, source = [], ["#include <nuvprinter/nuvprinter.h>", "#include <stdio.h>", "int main(void) {"]
    for name, kind in {**_native.STRUCTURES, "nuv_int": _native.Int, "nuv_text": _native.Text}.items():
        wanted.append(ctypes.sizeof(kind))
        source.append(f'printf("%zu\\n", sizeof({name}));')
        for field, *_ in kind._fields_:
            wanted += [getattr(kind, field).offset, getattr(kind, field).size]
            source.append(f'printf("%zu\\n%zu\\n", offsetof({name}, {field}), sizeof((({name}*)0)->{field}));')
    header = (Path(os.environ["NUV_SOURCE"]) / "include/nuvprinter/nuvprinter.h").read_text()
    for kind, prefix in constants.items():
        assert header.count(" " + prefix) >= len(kind), kind
        for one in kind:
            wanted.append(one.value)
            source.append(f'printf("%d\\n", {prefix}{one.name});')
    (tmp_path / "layout.c").write_text("\n".join([*source, "return 0; }"]))
    compiler = os.environ.get("NUV_CC", "cc").split()
    subprocess.run([*compiler, "-I", Path(os.environ["NUV_SOURCE"]) / "include", "layout.c", "-o", "layout.exe"],
                   cwd=tmp_path, check=True)
    printed = subprocess.run([*os.environ.get("NUV_RUN", "").split(), tmp_path / "layout.exe"], check=True,
                             stdout=subprocess.PIPE, text=True).stdout
    assert [int(number) for number in printed.split()] == wanted
