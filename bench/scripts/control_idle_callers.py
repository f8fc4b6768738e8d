#!/usr/bin/env python3
"""How long `cadrelle --status` takes while other callers hold idle
connections to the running instance's control socket.

  control_idle_callers.py [path/to/cadrelle] [idle callers] [rounds]

Starts a headless instance in a temporary HOME, opens the idle connections
(each from a process of its own, the first one with half a request line),
then times ROUNDS runs of the whole `cadrelle --status` command and of the bare
exchange on the socket; prints the median and the worst of each, with no
idle callers and with them.
"""
import os
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))


def timed(action, rounds):
    times = []
    for _ in range(rounds):
        start = time.perf_counter()
        action()
        times.append((time.perf_counter() - start) * 1000)
    return statistics.median(times), max(times)


def main():
    binary = sys.argv[1] if len(sys.argv) > 1 else os.path.join(HERE, "../../build/src/app/cadrelle")
    idle_count = int(sys.argv[2]) if len(sys.argv) > 2 else 50
    rounds = int(sys.argv[3]) if len(sys.argv) > 3 else 20
    work = tempfile.mkdtemp(prefix="cadrelle-bench-")
    home = os.path.join(work, "home")
    os.mkdir(home, 0o700)
    env = dict(os.environ, HOME=home, XDG_RUNTIME_DIR=home, XDG_CONFIG_HOME=home + "/.config",
               XDG_DATA_HOME=home + "/.local/share")
    env.pop("DISPLAY", None)
    path = os.path.join(home, "cadrelle", "control.sock")
    program = subprocess.Popen([binary, "--headless", "--app-dir", os.path.join(work, "app")], env=env,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    idle = []
    try:
        while not os.path.exists(path):
            time.sleep(0.05)

        def command():
            subprocess.run([binary, "--status"], env=env, stdout=subprocess.DEVNULL, check=True, timeout=120)

        def exchange():
            with socket.socket(socket.AF_UNIX) as s:
                s.connect(path)
                s.sendall(b"status\n")
                s.shutdown(socket.SHUT_WR)
                while s.recv(4096):
                    pass

        results = [("no idle callers", timed(command, rounds), timed(exchange, rounds))]
        ready_r, ready_w = os.pipe()
        for i in range(idle_count):
            pid = os.fork()
            if pid == 0:
                s = socket.socket(socket.AF_UNIX)
                s.connect(path)
                if i == 0:
                    s.send(b"stat")
                os.write(ready_w, b"c")
                signal.pause()
                os._exit(0)
            idle.append(pid)
        got = 0
        while got < idle_count:
            got += len(os.read(ready_r, idle_count))
        results.append(("%d idle callers" % idle_count, timed(command, rounds), timed(exchange, rounds)))
        for label, (cmd_median, cmd_worst), (raw_median, raw_worst) in results:
            print("%-18s cadrelle --status: median %6.1f ms, worst %6.1f ms;"
                  " socket exchange: median %5.2f ms, worst %5.2f ms"
                  % (label, cmd_median, cmd_worst, raw_median, raw_worst))
    finally:
        for pid in idle:
            os.kill(pid, signal.SIGKILL)
            os.waitpid(pid, 0)
        program.send_signal(signal.SIGTERM)
        program.wait(timeout=30)
        subprocess.run(["rm", "-rf", work])


if __name__ == "__main__":
    main()
