# SPDX-License-Identifier: MIT
"""Inventory, its collections, and the feed of what changes."""
from __future__ import annotations

import asyncio
import atexit
import collections
import dataclasses
import os
import threading
import types
from collections.abc import Iterator, Mapping
from typing import Any, Generic, TypeVar, cast

from . import _kecpp
from ._values import (Authorization, Change, Host, Identity, Kind, Machine, Privilege, Role, State,
                      Status)

__version__ = _kecpp.version()

# The library's threads may not run on while the process's exit handlers take away what they use.
atexit.register(_kecpp.close_all)

T = TypeVar("T")

_KINDS = tuple(Kind)
_STATES = tuple(State)
_AUTHORIZATIONS = tuple(Authorization)
_CLASSES = {Kind.HOST: Host, Kind.MACHINE: Machine, Kind.ROLE: Role, Kind.PRIVILEGE: Privilege,
            Kind.IDENTITY: Identity}


class Objects(Generic[T]):
    """The objects of one kind, as they are at each call."""

    def __init__(self, native: _kecpp.Inventory, kind: Kind) -> None:
        self._native = native
        self._kind = kind
        self._number = _KINDS.index(kind)

    def __iter__(self) -> Iterator[T]:
        """All objects as they are now, sorted by key."""
        return iter(cast(list[T], self._native.all(self._number)))

    def __len__(self) -> int:
        return self._native.count(self._number)

    def __contains__(self, key: object) -> bool:
        return isinstance(key, str) and self.get(key) is not None

    def __getitem__(self, key: str) -> T:
        """The object of that key; KeyError when there is none."""
        found = self.get(key)
        if found is None:
            raise KeyError(key)
        return found

    def get(self, key: str) -> T | None:
        """The object of that key, or None."""
        return cast("T | None", self._native.find(self._number, key))

    def columns(self, *names: str) -> dict[str, list[Any]]:
        """A list for each of these fields, all fields without a name: for tables, and some times as
        fast as a loop over the objects. Sorted by key; enumerations are plain texts."""
        fields = tuple(field.name for field in dataclasses.fields(_CLASSES[self._kind]))
        chosen = names or fields
        for name in chosen:
            if name not in fields:
                raise ValueError(f"a {self._kind} has no field {name!r}")
        lists = self._native.columns(self._number, [fields.index(name) for name in chosen])
        return dict(zip(chosen, lists))

    def __repr__(self) -> str:
        return f"<{len(self)} objects of kind {self._kind}>"


class Follower:
    """What changed since it was looked at last: at most one entry an object.

    A new follower begins with all that is known, as "added". Nothing is left out; the memory is
    bounded by the number of objects. Both loops work:

        for change in inventory.follow(): ...
        async for change in inventory.follow(): ...

    They end when nothing has changed for `timeout` seconds, when the follower or the inventory is
    closed, and when memory ran out while a lost connection was replaced: `closed` is true then.
    A task that is cancelled while it waits closes its follower. One thread or task uses a follower;
    any thread may close it. It keeps its inventory alive.
    """

    def __init__(self, native: _kecpp.Follower, timeout: float | None) -> None:
        self._native = native
        self._timeout = timeout
        self._taken: collections.deque[Change] = collections.deque()

    def wait(self, timeout: float | None = None) -> bool:
        """Waits until take() has something. False when the time is over or the follower closed."""
        return bool(self._taken) or self._native.wait(timeout)

    def take(self, most: int = 1000) -> list[Change]:
        """Up to so many changes, oldest first, without waiting."""
        if most < 1:
            raise ValueError("take at least one")
        if not self._taken:
            self._taken.extend(self._native.take(most))
        return [self._taken.popleft() for _ in range(min(most, len(self._taken)))]

    def close(self) -> None:
        """Ends the waiting. From then on there is nothing to take."""
        self._native.close()
        self._taken.clear()

    @property
    def closed(self) -> bool:
        """By close(), or with the inventory."""
        return self._native.closed()

    def __enter__(self) -> Follower:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: types.TracebackType | None) -> None:
        self.close()

    def __iter__(self) -> Follower:
        return self

    def __next__(self) -> Change:
        while not self._taken:
            if not self._native.wait(self._timeout):
                raise StopIteration
            self._taken.extend(self._native.take(1000))
        return self._taken.popleft()

    def __aiter__(self) -> Follower:
        return self

    async def __anext__(self) -> Change:
        while not self._taken:
            if not self._native.wait(0) and not await self._wait_beside():
                raise StopAsyncIteration
            self._taken.extend(self._native.take(1000))
        return self._taken.popleft()

    async def _wait_beside(self) -> bool:
        """Waits on a thread that ends with the wait. It is none of the loop's pool, which many
        followers would fill, and whose threads the end of the interpreter waits for."""
        loop = asyncio.get_running_loop()
        answer: asyncio.Future[bool] = loop.create_future()

        def give(found: bool, error: BaseException | None) -> None:
            if answer.done():
                return
            if error is None:
                answer.set_result(found)
            else:
                answer.set_exception(error)

        def run() -> None:
            found, failure = False, None
            try:
                found = self._native.wait(self._timeout)
            except Exception as error:  # pylint: disable=broad-except
                failure = error
            try:
                loop.call_soon_threadsafe(give, found, failure)
            except RuntimeError:  # the loop is closed: nobody waits any more
                pass

        threading.Thread(target=run, name="kecpp follower", daemon=True).start()
        try:
            return await answer
        except asyncio.CancelledError:
            self.close()
            raise


class Inventory:
    """The inventory of one daemon: connected and filled, or Error.

    config: a file's path, an XML text that begins with "<?xml", or empty for the library's own
        document.
    systems: hosts and machines are watched.
    authorization: whether roles, privileges and identities are.
    connect_in_background: do not wait; nothing is known until `status` says that it is connected.
    connect_timeout: how long to wait; None: as long as the configuration's time-outs let it.
    log_level: what goes to the system log: "none", "panic", "error", "warning", "info", "verbose"
        or "trivia". Empty: the process's first inventory logs as its configuration says.

    When the session or the daemon is lost, the library connects again; until then everything is as
    last known. When the daemon's process has changed, this process ends with status 0, and a
    supervisor starts it again. At the end of the interpreter all inventories are closed. A child
    after os.fork() cannot use its parent's.
    """

    def __init__(self, config: str | os.PathLike[str] = "", *, systems: bool = True,
                 authorization: Authorization | str = Authorization.WHERE_ALLOWED,
                 connect_in_background: bool = False, connect_timeout: float | None = None,
                 log_level: str = "") -> None:
        self._native = _kecpp.Inventory(
            os.fspath(config), systems, _AUTHORIZATIONS.index(Authorization(authorization)),
            connect_in_background, connect_timeout, log_level)

    def close(self) -> None:
        """Ends the session and the background thread, and lets every wait return. What is known
        stays readable. Within two seconds when the daemon answers, within five otherwise."""
        self._native.close()

    def __enter__(self) -> Inventory:
        return self

    def __exit__(self, kind: type[BaseException] | None, error: BaseException | None,
                 trace: types.TracebackType | None) -> None:
        self.close()

    @property
    def status(self) -> Status:
        """How the connection is."""
        return self._native.state()

    def wait_for_status(self, seen: Status, timeout: float | None = None) -> bool:
        """Waits until the state is another than `seen` has; true when it is."""
        return self._native.wait_for_state(_STATES.index(seen.state), seen.connections, seen.reason,
                                           timeout)

    @property
    def hosts(self) -> Objects[Host]:
        """The physical computers."""
        return Objects(self._native, Kind.HOST)

    @property
    def machines(self) -> Objects[Machine]:
        """The virtual machines."""
        return Objects(self._native, Kind.MACHINE)

    @property
    def roles(self) -> Objects[Role]:
        """Privileges, and who has them."""
        return Objects(self._native, Kind.ROLE)

    @property
    def privileges(self) -> Objects[Privilege]:
        """What may be allowed."""
        return Objects(self._native, Kind.PRIVILEGE)

    @property
    def identities(self) -> Objects[Identity]:
        """Users and groups."""
        return Objects(self._native, Kind.IDENTITY)

    def follow(self, timeout: float | None = None) -> Follower:
        """The objects as "added", then what changes. Iteration ends when nothing has changed for
        so many seconds; None: never."""
        return Follower(self._native.follow(), timeout)

    def invoke(self, method: str, target: tuple[str, str],
               arguments: Mapping[str, str] | None = None) -> str:
        """Calls a method of the daemon on an object, such as ("VirtualMachine", machine.key), and
        returns the inner XML of its answer. The arguments are in the order that the daemon asks
        for. Ctrl-C ends the wait for the answer, not the call."""
        return self._native.invoke(method, *target, list((arguments or {}).items()))

    def run_task(self, method: str, target: tuple[str, str],
                 arguments: Mapping[str, str] | None = None) -> bool:
        """Calls a method that starts a task, and waits for the task. False when it failed, and when
        the connection was lost or closed meanwhile. Ctrl-C ends the wait, not the task."""
        return self._native.run_task(method, *target, list((arguments or {}).items()))
