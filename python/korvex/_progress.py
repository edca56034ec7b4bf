"""Progress of long calls."""

from __future__ import annotations

import sys
import time
from contextlib import contextmanager
from typing import Callable, Iterator, Optional, Union

Callback = Callable[[int, int], None]
Progress = Union[None, bool, Callback]


def _is_seen() -> bool:
    """Whether standard error is a terminal, or the output of a notebook's cell."""
    try:
        return sys.stderr.isatty() or "ipykernel" in type(sys.stderr).__module__
    except (AttributeError, ValueError):  # there is none, or it is closed
        return False


@contextmanager
def shown(progress: Progress, what: str) -> Iterator[Optional[Callback]]:
    """A function of count and total for the compiled part; None for no progress."""
    if callable(progress):
        yield progress
        return
    if not (_is_seen() if progress is None else progress) or sys.stderr is None:
        yield None
        return
    start = time.monotonic()
    width = 30
    is_drawn = False

    def draw(count: int, total: int) -> None:
        nonlocal is_drawn
        is_drawn = True
        rate = count / max(time.monotonic() - start, 1e-9)
        if total == 0 or count == 0:
            text = f"{count} {what}"
        else:
            bar = "#" * (width * count // total)
            text = (f"[{bar:{width}}] {count}/{total} {what}, {rate:.0f}/s, "
                    f"{(total - count) / rate:.0f} s left")
        sys.stderr.write(f"\r{text:79}")
        sys.stderr.flush()

    try:
        yield draw
    finally:
        if is_drawn:
            sys.stderr.write("\n")
