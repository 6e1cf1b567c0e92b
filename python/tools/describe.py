"""Writes what follows from the docstrings: the stub of the extension module, and a page of docs.

Usage: describe.py [--check]; with --check it says which file is not as it would be written. Needs the
package qv_sensor to be importable.
"""

from __future__ import annotations

import inspect
import re
import sys
import textwrap
import types
from pathlib import Path
from typing import Any

import qv_sensor
from qv_sensor import _core, _types

ROOT = Path(__file__).resolve().parents[2]
STUB = ROOT / "python" / "qv_sensor" / "_core.pyi"
PAGE = ROOT / "docs" / "python-reference.md"

STUB_HEAD = '''"""The extension module. Written by python/tools/describe.py from its docstrings."""

from collections.abc import Callable, Iterable, Mapping, Sequence, Set
from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray
from typing_extensions import Self

from ._subscription import Subscription
from ._types import (
{types}
)

__version__: str
'''

PAGE_HEAD = """# The Python package, name by name

Written by `python/tools/describe.py` from the docstrings, as `./dev docs` does; [python.md](python.md) is
where to begin. A pose is x, y in metres and theta in radians: a `Pose2D`, or any three numbers. Names
are one or several of sensors or families, or None for all.
"""

PROPERTY = (property, types.GetSetDescriptorType)

UNTOLD = {
    "__enter__": "__enter__() -> Self",
    "__exit__": "__exit__(*error: object) -> None",
}


def split(doc: str) -> tuple[str, str]:
    """The first paragraph's line, which is a signature, and the rest."""
    first, _, rest = doc.strip().partition("\n")
    return first.strip(), rest.strip()


def members_of(cls: type) -> list[tuple[str, Any]]:
    """The members in the order in which they were bound; how an object is made comes first."""
    told = [(name, value) for name, value in vars(cls).items() if signature_of(name, value)]
    told = [(name, value) for name, value in told if name != "__module__"]
    return sorted(told, key=lambda each: each[0] != "__init__")


def signature_of(name: str, value: Any) -> str:
    doc = getattr(value, "__doc__", None) or ""
    if isinstance(value, PROPERTY):
        return split(doc)[0]
    if name in UNTOLD and not doc.startswith(name):
        return UNTOLD[name]
    return split(doc)[0] if doc.startswith(f"{name}(") else ""


def stub_of_property(name: str, value: Any) -> list[str]:
    kind = split(value.__doc__ or "")[0].partition(": ")[0]
    lines = ["    @property", f"    def {name}(self) -> {kind}: ..."]
    if getattr(value, "fset", None):
        given = {"Pose2D": "PoseLike"}.get(kind, kind)
        lines += [f"    @{name}.setter", f"    def {name}(self, value: {given}) -> None: ..."]
    return lines


def stub_of_class(cls: type) -> list[str]:
    base = cls.__mro__[1]
    bases = f"({base.__name__})" if base.__module__ == "qv_sensor._core" else ""
    if issubclass(cls, Exception):
        attributes = ["    module: str", "    method: str", "    message: str"]
        return ["", f"class {cls.__name__}({base.__name__}):", *attributes]
    lines = ["", f"class {cls.__name__}{bases}:"]
    for name, value in members_of(cls):
        if isinstance(value, PROPERTY):
            lines += stub_of_property(name, value)
        else:
            signature = signature_of(name, value).replace("(", "(self, ", 1)
            lines.append(f"    def {signature.replace('(self, )', '(self)')}: ...")
    return lines if len(lines) > 2 else [*lines, "    ..."]


def public_names() -> list[str]:
    """The names of the extension module, in the order in which they were bound."""
    return [name for name, value in vars(_core).items() if callable(value) and name[0] != "_"]


def stub() -> str:
    lines: list[str] = []
    for name in public_names():
        value = getattr(_core, name)
        if isinstance(value, type):
            lines += stub_of_class(value)
        else:
            lines += ["", f"def {split(value.__doc__)[0]}: ..."]
    body = "\n".join(lines) + "\n"
    own = re.findall(r"^(?:class )?(\w+)(?:\(| = )", inspect.getsource(_types), re.MULTILINE)
    used = sorted(name for name in own if re.search(rf"\b{name}\b", body))
    return STUB_HEAD.format(types="\n".join(f"    {name}," for name in used)) + body


def text_of_member(owner: str, name: str, value: Any) -> str:
    first, rest = split(value.__doc__ or "")
    if isinstance(value, PROPERTY):
        kind, _, text = first.partition(": ")
        return f"- **{name}** (`{kind}`): {' '.join([text, *rest.split()])}"
    shown = first.replace("__init__", owner, 1).replace(" -> None", "") if name == "__init__" else first
    text = f"- `{shown}`"
    return text + ("\n\n" + textwrap.indent(rest, "  ") if rest else "")


def text_of(name: str) -> str:
    value = getattr(qv_sensor, name)
    if not isinstance(value, type):
        return text_of_function(name, value)
    parts = [f"## {name}", inspect.cleandoc(value.__doc__ or "")]
    if value.__module__ == "qv_sensor._core":
        told = [text_of_member(name, *each) for each in members_of(value) if each[0] not in UNTOLD]
        parts.append("\n".join(told))
    elif hasattr(value, "_fields"):
        fields = value.__annotations__.items()
        kinds = ", ".join(f"`{field}: {kind.__forward_arg__}`" for field, kind in fields)
        parts.append(f"A named tuple: {kinds}.")
    return "\n\n".join(part for part in parts if part)


def text_of_function(name: str, value: Any) -> str:
    if value.__module__ == "qv_sensor._core":
        signature, rest = split(value.__doc__)
    else:
        # Annotations are texts; defaults keep their quotes.
        bare = re.sub(r"(: |-> )'([^']*)'", r"\1\2", str(inspect.signature(value)))
        signature = name + bare.replace("'", '"')
        rest = inspect.cleandoc(value.__doc__)
    return f"## {name}\n\n```python\n{signature}\n```\n\n{rest}".strip()


def page() -> str:
    names = [name for name in qv_sensor.__all__ if name[0] != "_"]
    return "\n\n".join([PAGE_HEAD.strip(), *map(text_of, names)]) + "\n"


def main() -> int:
    different = 0
    for path, text in ((STUB, stub()), (PAGE, page())):
        if path.exists() and path.read_text() == text:
            continue
        if "--check" in sys.argv[1:]:
            print(f"{path.relative_to(ROOT)} is not what python/tools/describe.py writes")
            different = 1
        else:
            path.write_text(text)
    return different


if __name__ == "__main__":
    sys.exit(main())
