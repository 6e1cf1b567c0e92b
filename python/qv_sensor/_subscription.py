"""Objects for `with` blocks: subscriptions, and registered modules."""

from __future__ import annotations

from typing import TYPE_CHECKING, Union

if TYPE_CHECKING:
    from ._core import Broker, ModuleBase, SensorManager, Session
    from ._types import Names


class Subscription:
    """A subscription to a Session or a SensorManager for a `with` block.

    Inside the block `subscriber` is subscribed to `names`, sensors or families, by default all. The
    block begins once their hardware has started. The robot may end inside the block.
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
        """Waits for a fresh record of each sensor, as `await_records` of the target does."""
        return self._target.await_records(limit, self._names)


class ScopedModule:
    """Registers a module at a broker for a `with` block, which gives the module.

    Use it for modules that keep their own broker, such as a NavigationModule. Module and broker would
    otherwise keep each other alive for ever.
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
