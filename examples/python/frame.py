#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Puts all machines into a pandas frame and counts them by host and power state:

frame.py [CONFIG-FILE [TIMES]]     with TIMES also says what the frame costs

It needs Debian's python3-pandas."""
import sys
import time
from collections.abc import Callable

import pandas  # type: ignore[import]

import kecpp


def measure(inventory: kecpp.Inventory, times: int) -> None:
    """Processor time of each way: the quickest of so many runs."""
    ways: dict[str, Callable[[], object]] = {
        "columns(), all twelve": lambda: pandas.DataFrame(inventory.machines.columns()),
        "columns(), four fields": lambda: pandas.DataFrame(
            inventory.machines.columns("name", "host", "power_state", "guest_full_name")),
        "the data classes, all twelve": lambda: pandas.DataFrame(inventory.machines),
        "a loop, four fields": lambda: pandas.DataFrame(
            [(m.name, m.host, m.power_state, m.guest_full_name) for m in inventory.machines]),
        "the machines alone, no frame": lambda: list(inventory.machines),
    }
    for name, make in ways.items():
        seconds = []
        for _ in range(times):
            begin = time.process_time()
            make()
            seconds.append(time.process_time() - begin)
        print(f"{name}: {1000 * min(seconds):.0f} ms")


def main(config: str = "", times: str = "0") -> None:
    with kecpp.Inventory(config) as inventory:
        frame = pandas.DataFrame(inventory.machines.columns())
        print(frame.groupby(["host", "power_state"]).size().unstack(fill_value=0))
        if int(times) > 0:
            measure(inventory, int(times))


if __name__ == "__main__":
    try:
        main(*sys.argv[1:])
    except kecpp.Error as error:
        sys.exit(str(error))
