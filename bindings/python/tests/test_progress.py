"""Long solves: progress, cancelling, exceptions, Ctrl-C, threads."""

import os
import signal
import subprocess
import sys
import threading

import numpy as np
import pytest
from networks import two_pipes, unsolvable

import tavell


class Trouble(Exception):
    pass


def raising(error, at=3):
    def on_progress(step):
        if step == at:
            raise error

    return on_progress


def test_every_step_is_told_with_its_number(reservoirs):
    steps = []
    result = reservoirs.solve(on_progress=steps.append)
    assert steps == list(range(1, result.iterations + 1))


def test_what_the_function_returns_does_not_stop_but_for_stop(reservoirs):
    for answer in (True, 1, "stop", None, False):
        assert reservoirs.solve(on_progress=lambda step, answer=answer: answer).converged


def test_stop_cancels_the_solve(reservoirs):
    steps = []

    def on_progress(step):
        steps.append(step)
        return tavell.STOP if step == 5 else None

    with pytest.raises(tavell.Cancelled) as caught:
        reservoirs.solve(on_progress=on_progress)
    assert steps == [1, 2, 3, 4, 5]
    assert caught.value.findings.codes == ["solve-cancelled"]
    assert caught.value.result.outcome == "cancelled"
    result = reservoirs.solve(on_progress=lambda step: tavell.STOP, must_converge=False)
    assert result.outcome == "cancelled" and not result.has_values


@pytest.mark.parametrize("error", [Trouble("here"), KeyboardInterrupt(), SystemExit(3), StopIteration()])
def test_an_exception_goes_on_when_the_solve_has_stopped(reservoirs, error):
    with pytest.raises(type(error)) as caught:
        reservoirs.solve(on_progress=raising(error))
    assert caught.value is error
    assert reservoirs.solve().converged


def test_an_exception_ends_the_doctor_the_search_and_the_report(tmp_path):
    network = unsolvable()
    with pytest.raises(Trouble):
        network.doctor(on_progress=raising(Trouble()))
    with pytest.raises(Trouble):
        network.smallest_failing_part(on_progress=raising(Trouble()))
    result = network.solve(must_converge=False)
    with pytest.raises(Trouble):
        result.report(tmp_path / "page.html", on_progress=raising(Trouble()))
    with pytest.raises(Trouble):
        network.report(tmp_path / "page.html", on_progress=raising(Trouble()))
    assert list(tmp_path.iterdir()) == []


def test_stop_ends_the_doctor_with_what_was_found():
    findings = unsolvable().doctor(on_progress=lambda step: tavell.STOP)
    assert "valve-against-only-flow" in findings.codes
    assert "solve-cancelled" in findings.codes
    assert "smallest-failing-part" not in findings.codes


def test_stop_leaves_no_report(tmp_path, reservoirs):
    with pytest.raises(tavell.Cancelled):
        reservoirs.report(tmp_path / "page.html", on_progress=lambda step: tavell.STOP)
    with pytest.raises(tavell.Cancelled):
        unsolvable().solve(must_converge=False).report(
            tmp_path / "page.html", on_progress=lambda step: tavell.STOP
        )
    assert list(tmp_path.iterdir()) == []


# Signals


def test_an_interrupt_within_a_solve_ends_it(reservoirs):
    steps = []

    def on_progress(step):
        steps.append(step)
        if step == 3:
            signal.raise_signal(signal.SIGINT)

    before = signal.getsignal(signal.SIGINT)
    with pytest.raises(KeyboardInterrupt):
        reservoirs.solve(on_progress=on_progress)
    assert steps == [1, 2, 3]
    assert signal.getsignal(signal.SIGINT) is before
    assert reservoirs.solve().converged


def test_an_interrupt_from_another_thread_ends_a_solve(reservoirs):
    is_solving, is_sent = threading.Event(), threading.Event()

    def interrupt():
        is_solving.wait()
        os.kill(os.getpid(), signal.SIGINT)
        is_sent.set()

    def on_progress(step):
        is_solving.set()
        is_sent.wait()

    sender = threading.Thread(target=interrupt)
    sender.start()
    with pytest.raises(KeyboardInterrupt):
        reservoirs.solve(on_progress=on_progress)
    sender.join()


def test_the_handler_of_a_program_is_called_and_may_let_the_solve_go_on(reservoirs):
    heard = []
    before = signal.signal(signal.SIGINT, lambda number, frame: heard.append(number))
    try:
        result = reservoirs.solve(
            on_progress=lambda step: signal.raise_signal(signal.SIGINT) if step == 2 else None
        )
    finally:
        signal.signal(signal.SIGINT, before)
    assert heard == [signal.SIGINT]
    assert result.converged


@pytest.mark.skipif(not hasattr(signal, "SIGALRM"), reason="no alarms on this system")
def test_the_handler_of_another_signal_may_raise(reservoirs):
    def on_alarm(number, frame):
        raise Trouble("time is up")

    before = signal.signal(signal.SIGALRM, on_alarm)
    try:
        with pytest.raises(Trouble):
            reservoirs.solve(
                on_progress=lambda step: signal.raise_signal(signal.SIGALRM) if step == 2 else None
            )
    finally:
        signal.signal(signal.SIGALRM, before)


def test_an_ignored_interrupt_stays_ignored(reservoirs):
    before = signal.signal(signal.SIGINT, signal.SIG_IGN)
    try:
        assert reservoirs.solve(on_progress=lambda step: signal.raise_signal(signal.SIGINT)).converged
        assert signal.getsignal(signal.SIGINT) is signal.SIG_IGN
    finally:
        signal.signal(signal.SIGINT, before)


@pytest.mark.skipif(os.name != "posix", reason="signals are sent with kill")
def test_no_interrupt_is_lost_wherever_it_arrives():
    """A program that solves all the time is interrupted many times; every interrupt must arrive as an
    exception, and none where nobody can catch it."""
    code = """
import sys, networks
network = networks.unsolvable()
for count in range(40):
    try:
        print("solving", flush=True)
        while True:
            network.solve(must_converge=False)
    except KeyboardInterrupt:
        pass
print("end", flush=True)
"""
    folder = os.path.dirname(os.path.abspath(__file__))
    package = os.path.dirname(os.path.dirname(os.path.abspath(tavell.__file__)))
    environment = {**os.environ, "PYTHONPATH": os.pathsep.join([package, folder])}
    program = subprocess.Popen(
        [sys.executable, "-c", code],
        env=environment,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
    )
    assert program.stdout is not None
    lines = []
    for line in program.stdout:
        lines.append(line.strip())
        if lines[-1] == "solving":
            program.send_signal(signal.SIGINT)
    _, errors = program.communicate()
    assert lines == ["solving"] * 40 + ["end"]
    assert errors == ""
    assert program.returncode == 0


# Threads


def test_two_solves_run_at_the_same_time():
    """Each solve waits in its second step for the other one to be there: a solve that kept the interpreter
    for itself would wait for ever."""
    meeting = threading.Barrier(2, timeout=60)
    outcomes = []

    def solve(network):
        def on_progress(step):
            if step <= 5:
                meeting.wait()

        outcomes.append(network.solve(on_progress=on_progress).outcome)

    threads = [threading.Thread(target=solve, args=(two_pipes(),)) for _ in range(2)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert outcomes == ["converged", "converged"]


def test_one_network_is_solved_by_several_threads(reservoirs):
    expected = reservoirs.solve().node_values("pressure")
    found = []

    def solve():
        for _ in range(20):
            found.append(reservoirs.solve().node_values("pressure").copy())

    threads = [threading.Thread(target=solve) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert len(found) == 80
    for values in found:
        np.testing.assert_array_equal(values, expected)


def test_a_network_is_not_changed_while_it_is_solved(reservoirs):
    messages = []

    def on_progress(step):
        with pytest.raises(RuntimeError) as caught:
            reservoirs.set_element_values("diameter", 0.1)
        messages.append(str(caught.value))
        return tavell.STOP

    before = reservoirs.hash()
    reservoirs.solve(on_progress=on_progress, must_converge=False)
    assert messages == ["the network is in use by another thread or by a running solve"]
    assert reservoirs.hash() == before
    reservoirs.set_element_values("diameter", 0.1)


def test_a_network_that_is_being_changed_is_not_read(reservoirs):
    reservoirs._live._is_changing = True
    try:
        for call in (reservoirs.solve, reservoirs.to_json, reservoirs.copy, lambda: reservoirs.node_names):
            with pytest.raises(RuntimeError, match="being changed by another thread"):
                call()
    finally:
        reservoirs._live._is_changing = False
    assert reservoirs.solve().converged


def test_a_solve_may_be_begun_within_a_solve(reservoirs):
    inner = []
    result = reservoirs.solve(
        on_progress=lambda step: inner.append(reservoirs.solve().outcome) if step < 3 else None
    )
    assert result.converged
    assert inner == ["converged", "converged"]


def test_a_thread_other_than_the_first_solves_without_a_progress_function(reservoirs):
    outcomes = []
    thread = threading.Thread(target=lambda: outcomes.append(reservoirs.solve().outcome))
    thread.start()
    thread.join()
    assert outcomes == ["converged"]
