#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Lists the machines that run, then what changes, until nothing did for a minute:

machines.py [CONFIG-FILE [SECONDS]]"""
import sys

import kecpp


def main(config: str = "", seconds: str = "60") -> None:
    with kecpp.Inventory(config) as inventory:
        print([m.name for m in inventory.machines if m.power_state == "poweredOn"])
        for change in inventory.follow(timeout=float(seconds)):
            print(change.type, change.kind, change.key)
            if isinstance(change.object, kecpp.Machine):
                print("   ", change.object.name, change.object.power_state)


if __name__ == "__main__":
    try:
        main(*sys.argv[1:])
    except kecpp.Error as error:
        sys.exit(str(error))
    except KeyboardInterrupt:
        sys.exit(130)
