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
    """The quickest of so many runs of each way."""
    ways: dict[str, Callable[[], object]] = {
        "columns()": lambda: pandas.DataFrame(inventory.machines.columns()),
        "columns() of four": lambda: pandas.DataFrame(
            inventory.machines.columns("name", "host", "power_state", "guest_full_name")),
        "a loop over the machines": lambda: pandas.DataFrame(
            [(m.key, m.name, m.host, m.power_state) for m in inventory.machines]),
        "the machines alone, no frame": lambda: list(inventory.machines),
    }
    for name, make in ways.items():
        seconds = []
        for _ in range(times):
            begin = time.perf_counter()
            make()
            seconds.append(time.perf_counter() - begin)
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
