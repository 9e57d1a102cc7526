# SPDX-License-Identifier: MIT
"""The simulator and the agent as processes, for the tests in Python."""
import contextlib
import json
import os
import re
import subprocess
import sys
import tempfile
import time
import urllib.request

SKIPPED = 77
PATIENCE = 60  # seconds


def fetch(url, data=None, method=None):
    request = urllib.request.Request(url, data, {"Content-Type": "application/json"}, method=method)
    with urllib.request.urlopen(request, timeout=PATIENCE) as answer:
        return answer.read()


def ask(url, body=None, method=None):
    text = fetch(url, None if body is None else json.dumps(body).encode(), method)
    return json.loads(text) if text else None


def eventually(what, condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            sys.exit(f"never: {what}")
        time.sleep(0.05)


@contextlib.contextmanager
def program(command, pattern, stderr=False):
    """Runs a program until the block ends; gives what the pattern finds in its output."""
    stream = "stderr" if stderr else "stdout"
    process = subprocess.Popen(command, text=True, **{stream: subprocess.PIPE})
    try:
        for line in getattr(process, stream):
            if match := re.search(pattern, line):
                yield match.group(1)
                return
        sys.exit(f"{command[0]} ended")
    finally:
        process.terminate()
        process.wait(PATIENCE)


@contextlib.contextmanager
def simulated_daemon(simulator, machines=12):
    """Runs a simulator until the block ends; gives the URL of its control and a configuration."""
    with tempfile.TemporaryDirectory() as folder, contextlib.ExitStack() as stack:
        daemon = stack.enter_context(program(
            [simulator, "--listen-port", "0", "--ticket-dir", folder, "--machines", str(machines)],
            "listening on (.*)"))
        config = os.path.join(folder, "config.xml")
        with open(config, "w", encoding="utf-8") as file:
            file.write('<?xml version="1.0"?><Config><SSLInfo/><ConnectionInfo>'
                       f"<url>{daemon}</url><timeout>60</timeout></ConnectionInfo><LoginInfo>"
                       "<localTicket>true</localTicket><userName>root</userName></LoginInfo>"
                       "<LogInfo><level>none</level></LogInfo></Config>")
        yield daemon.split("/sdk")[0] + "/control", config


def agent_of(agent, config, *options, listen="127.0.0.1:0"):
    """Runs an agent until the block ends; gives its URL."""
    return program([agent, "--config", config, "--listen", listen, *options], "listening on (.*)")


@contextlib.contextmanager
def agent_of_a_simulator(simulator, agent, *options):
    """Runs both until the block ends; gives the URLs of the simulator's control and of the agent."""
    with simulated_daemon(simulator) as (control, config):
        with agent_of(agent, config, *options) as url:
            yield control, url
