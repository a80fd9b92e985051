#!/usr/bin/python3
"""Takes the place of the screen of the simulated mill: LinuxCNC starts it when all else runs, and
ends with it. It switches the machine on, homes it and runs programs until the file `stop` is there or
a signal comes. start.sh says in the environment what to do. Exit status 0: all of it worked."""
import os
import signal
import subprocess
import sys
import time

import linuxcnc

COMMAND = linuxcnc.command()
STATUS = linuxcnc.stat()
ERRORS = linuxcnc.error_channel()
PATIENCE = 30.0  # seconds for what takes a moment
faults = []
signals = []


def stopped():
    return bool(signals) or os.path.exists("stop")


def look():
    """Brings the status up to date and collects what the controller complains of."""
    STATUS.poll()
    while (message := ERRORS.poll()) is not None:
        kind, text = message
        print("machine: says", text, flush=True)
        if kind in (linuxcnc.NML_ERROR, linuxcnc.OPERATOR_ERROR):
            faults.append(text)


def until(what, reached, seconds=PATIENCE):
    end = time.monotonic() + seconds
    while not stopped():
        look()
        if reached():
            return True
        if time.monotonic() > end:
            faults.append(f"no {what} within {seconds:g} s")
            return False
        time.sleep(0.02)
    return False


def switch_on():
    until("task controller", lambda: STATUS.echo_serial_number >= 0 and STATUS.task_state > 0)
    for state in (linuxcnc.STATE_ESTOP_RESET, linuxcnc.STATE_ON):
        COMMAND.state(state)
        COMMAND.wait_complete()
    until("power", lambda: STATUS.task_state == linuxcnc.STATE_ON)
    COMMAND.mode(linuxcnc.MODE_MANUAL)
    COMMAND.wait_complete()
    COMMAND.teleop_enable(0)
    COMMAND.wait_complete()
    COMMAND.home(-1)
    if until("home", lambda: all(STATUS.homed[: STATUS.joints])):
        print("machine: on", flush=True)


def run(program):
    COMMAND.mode(linuxcnc.MODE_AUTO)
    COMMAND.wait_complete()
    COMMAND.program_open(program)
    COMMAND.wait_complete()
    COMMAND.auto(linuxcnc.AUTO_RUN, 0)
    until("start of " + program, lambda: STATUS.interp_state != linuxcnc.INTERP_IDLE)
    until("end of " + program,
          lambda: STATUS.interp_state == linuxcnc.INTERP_IDLE and STATUS.inpos and STATUS.queue == 0,
          seconds=300.0)


def run_programs():
    programs = os.environ["SIM_PROGRAMS"].split()
    again = True
    while again and programs:
        for program in programs:
            if not stopped():
                run(program)
        again = bool(os.environ["SIM_LOOP"]) and not stopped()
    until("stop", lambda: False, seconds=float("inf"))


def end_beside(beside):
    beside.terminate()  # one that has ended does not mind
    try:
        status = beside.wait(10)
    except subprocess.TimeoutExpired:
        beside.kill()
        status = -1
    with open("beside", "w", encoding="ascii") as file:
        file.write(f"{status}\n")


def main():
    for number in (signal.SIGTERM, signal.SIGINT):
        signal.signal(number, lambda number, _frame: signals.append(number))
    switch_on()
    beside = None
    if os.environ["SIM_BESIDE"]:
        beside = subprocess.Popen(["/bin/sh", "-c", os.environ["SIM_BESIDE"]])
    run_programs()
    if beside:
        end_beside(beside)
    COMMAND.abort()
    COMMAND.wait_complete()
    COMMAND.state(linuxcnc.STATE_OFF)
    COMMAND.wait_complete()
    for fault in faults:
        print("machine: FAULT", fault, flush=True)
    return 1 if faults else 0


sys.exit(main())
