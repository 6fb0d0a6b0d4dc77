#!/usr/bin/env python3
"""Runs a command on a terminal of its own, types, and prints what appears: terminal.py COMMAND [EXPECTED TYPED]...

Types each text when the expected one has appeared after the last typed text and the command waits. The exit status is the
command's, 128 and more for a signal; 1 when an expected text does not appear or the terminal is left without echo. Ends by
SIGALRM after ten minutes, as on a loaded machine.
"""
import glob
import os
import pty
import signal
import sys
import termios
import time

command, steps = sys.argv[1], sys.argv[2:]
signal.alarm(600)
child, terminal = pty.fork()
if child == 0:
    signal.signal(signal.SIGINT, signal.SIG_DFL)  # a shell lets its background jobs ignore it
    termios.tcsetwinsize(0, (24, 80))
    os.execl("/bin/sh", "sh", "-c", command)


def appeared():
    """What has appeared since the last call; nothing when the command has left the terminal."""
    try:
        text = os.read(terminal, 65536)
    except OSError:
        return b""
    sys.stdout.buffer.write(text)
    sys.stdout.flush()
    return text


def waits():
    """Whether no thread of the command and of its children has anything to do."""
    for file in glob.glob("/proc/[0-9]*/task/*/stat"):
        try:
            state, _, _, session = open(file).read().rpartition(")")[2].split()[:4]
        except OSError:
            continue  # it has ended
        if int(session) == child and state in "RD":
            return False
    return True


for expected, typed in zip(steps[::2], steps[1::2]):
    seen = b""
    while expected.encode() not in seen:
        text = appeared()
        if not text:
            sys.exit("%s did not appear" % expected)
        seen += text
    while not waits():  # a signal between a prompt and the reading that follows it would be lost
        time.sleep(0.01)
    os.write(terminal, typed.encode())
while appeared():
    pass
if not termios.tcgetattr(terminal)[3] & termios.ECHO:
    sys.exit("the terminal is left without echo")
status = os.waitstatus_to_exitcode(os.waitpid(child, 0)[1])
sys.exit(status if status >= 0 else 128 - status)
