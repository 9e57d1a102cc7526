# SPDX-License-Identifier: MIT
"""The inventory of a virtualization host, kept true while the host changes.

    import kecpp

    with kecpp.Inventory("agent.xml") as inventory:
        print([m.name for m in inventory.machines if m.power_state == "poweredOn"])
        for change in inventory.follow(timeout=60):
            print(change.kind, change.key, change.object)

Connecting, logging in, watching and connecting again are done on a thread of the library, which runs
no Python. Every operation may be called from any thread, gives the interpreter lock up while it
waits, and ends at once with Ctrl-C in the main thread. Timeouts are seconds; None waits for ever.
"""
from ._inventory import Follower, Inventory, Objects, __version__
from ._values import (Authorization, Change, ChangeType, Error, Host, Identity, Kind, Machine,
                      Object, PowerState, Privilege, Role, State, Status)

__all__ = [
    "Authorization", "Change", "ChangeType", "Error", "Follower", "Host", "Identity", "Inventory",
    "Kind", "Machine", "Object", "Objects", "PowerState", "Privilege", "Role", "State", "Status",
    "__version__",
]
