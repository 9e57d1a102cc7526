#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Follows several hosts in one asyncio program, until nothing changed for a minute:

follow_async.py SECONDS CONFIG-FILE..."""
import asyncio
import sys

import kecpp


async def follow(config: str, seconds: float) -> None:
    # Connecting waits, and so do close() and run_task(): they are for threads.
    inventory = await asyncio.to_thread(kecpp.Inventory, config, connect_timeout=30)
    try:
        async for change in inventory.follow(timeout=seconds):
            print(config, change.type, change.kind, change.key)
    finally:
        await asyncio.to_thread(inventory.close)


async def main(seconds: str, *configs: str) -> None:
    await asyncio.gather(*(follow(config, float(seconds)) for config in configs))


if __name__ == "__main__":
    try:
        asyncio.run(main(*sys.argv[1:]))
    except kecpp.Error as error:
        sys.exit(str(error))
    except KeyboardInterrupt:
        sys.exit(130)
