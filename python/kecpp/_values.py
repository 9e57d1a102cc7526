# SPDX-License-Identifier: MIT
"""The values: what an inventory holds, and what changes.

Fields and members are in the order in which Values.cpp gives them. Enumerations are texts: a member
equals its text, also in a comparison with a literal.
"""
from __future__ import annotations

import dataclasses
import datetime
import enum
from typing import Union


class Kind(enum.StrEnum):
    """The kinds of objects."""

    HOST = "host"
    MACHINE = "machine"
    ROLE = "role"
    PRIVILEGE = "privilege"
    IDENTITY = "identity"


class PowerState(enum.StrEnum):
    """Whether a machine runs. UNKNOWN: `power_state_text` is another word, or none."""

    UNKNOWN = "unknown"
    OFF = "poweredOff"
    ON = "poweredOn"
    SUSPENDED = "suspended"


class Authorization(enum.StrEnum):
    """Roles, privileges and identities: not watched, watched unless the daemon keeps them from this
    account, or their absence is an error."""

    NONE = "none"
    WHERE_ALLOWED = "where allowed"
    REQUIRED = "required"


class State(enum.StrEnum):
    """How the connection is."""

    CONNECTING = "connecting"
    CONNECTED = "connected"
    LOST = "lost"


class ChangeType(enum.StrEnum):
    """What became of an object."""

    ADDED = "added"
    CHANGED = "changed"
    REMOVED = "removed"


@dataclasses.dataclass(frozen=True, slots=True)
class Host:
    """A physical computer."""

    key: str
    name: str
    description: str
    uuid: str
    vendor: str
    model: str
    operational_status: int  # CIM's: 2 OK, 3 degraded, 6 error, 0 unknown
    machines: tuple[str, ...]  # keys, sorted


@dataclasses.dataclass(frozen=True, slots=True)
class Machine:
    """A virtual machine."""

    key: str
    name: str
    description: str
    uuid: str
    guest_full_name: str
    guest_host_name: str
    guest_ip_address: str
    path: str  # of the file that describes it
    power_state_text: str  # the daemon's word, such as "poweredOn"
    power_state: PowerState
    operational_status: int  # as a host's
    host: str | None  # key; None while the daemon names no host


@dataclasses.dataclass(frozen=True, slots=True)
class Role:
    """Privileges, and the identities that have them."""

    key: str
    name: str
    caption: str
    description: str
    type: str
    privileges: tuple[str, ...]  # keys, sorted
    identities: tuple[str, ...]  # keys, sorted


@dataclasses.dataclass(frozen=True, slots=True)
class Privilege:
    """The right to do one thing."""

    key: str
    name: str
    roles: tuple[str, ...]  # keys, sorted


@dataclasses.dataclass(frozen=True, slots=True)
class Identity:
    """A user or a group of users."""

    key: str
    roles: tuple[str, ...]  # keys, sorted


Object = Union[Host, Machine, Role, Privilege, Identity]


@dataclasses.dataclass(frozen=True, slots=True)
class Change:
    """What became of which object."""

    type: ChangeType
    kind: Kind
    key: str
    object: Object | None  # as it was when the change was taken; None when it was gone


@dataclasses.dataclass(frozen=True, slots=True)
class Status:
    """How the connection is. Times are in UTC."""

    state: State
    reason: str  # why it is lost and could not be made again, or not made yet; else empty
    since: datetime.datetime | None  # of this state
    connections: int  # made so far
    has_authorization: bool  # roles, privileges and identities are watched
    authorization_failure: str  # why they are not, though they were asked for

    # Of the connection that there is, or was last:
    updates: int  # update sets applied
    last_update: datetime.datetime | None  # when one was, to the second
    version: str  # the daemon's, of the last update set
    failures: int  # failed cycles since the last good one
    last_failure: str  # the text of the last failed cycle; or empty
    last_failure_time: datetime.datetime | None


class Error(Exception):
    """Why something could not be done."""

    def __init__(self, url: str, reason: str) -> None:
        super().__init__(url, reason)
        self.url = url  # of the daemon; empty where it does not matter
        self.reason = reason

    def __str__(self) -> str:
        return f"{self.url}: {self.reason}" if self.url else self.reason
