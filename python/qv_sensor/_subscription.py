"""What ends with a block: subscriptions, and the modules of a robot."""

from __future__ import annotations

from typing import TYPE_CHECKING, Union

if TYPE_CHECKING:
    from ._core import Broker, ModuleBase, SensorManager, Session
    from ._types import Names


class Subscription:
    """A subscription for a `with` block, of a Session or a SensorManager.

    Within the block `subscriber` wants `names`, sensors or families, by default all. Starting their
    hardware may take as long as the hardware does. A robot that ends within the block is no error.
    """

    def __init__(
        self, target: Union[Session, SensorManager], subscriber: str, names: Names = None
    ) -> None:
        self._target = target
        self._subscriber = subscriber
        # Whatever can be gone through once only is asked twice.
        self._names: Names = names if names is None or isinstance(names, str) else set(names)

    def __enter__(self) -> Subscription:
        self._target.subscribe(self._subscriber, self._names)
        return self

    def __exit__(self, *error: object) -> None:
        if self._target.is_open:
            self._target.unsubscribe(self._subscriber, self._names)

    def await_records(self, limit: int) -> dict[str, str]:
        """Waits for the first fresh record of each sensor, as the target's `await_records` does."""
        return self._target.await_records(limit, self._names)


class ScopedModule:
    """A module that is registered at a broker for a `with` block, which gives the module.

    For modules that hold their own broker, as a NavigationModule does: both would live for ever else.
    """

    def __init__(self, broker: Broker, module: ModuleBase) -> None:
        self._broker = broker
        self._module = module

    def __enter__(self) -> ModuleBase:
        self._broker.register_module(self._module)
        return self._module

    def __exit__(self, *error: object) -> None:
        if self._broker.has_module(self._module.name):
            self._broker.unregister_module(self._module.name)
