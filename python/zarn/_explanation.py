"""Why a light path is blocked or clear."""

from __future__ import annotations

import json
from typing import Any


class Explanation:
    """How every component judges one light path.

    ``print`` it to read it; ``to_dict`` has all digits. docs/verdicts.md lists the keys.
    """

    def __init__(self, text: str, as_json: str) -> None:
        self._text = text
        self._json = as_json

    def __str__(self) -> str:
        return self._text.rstrip("\n")

    __repr__ = __str__

    def to_dict(self) -> dict[str, Any]:
        """Return rules, quantities, limits and items of all components."""
        explanation: dict[str, Any] = json.loads(self._json)
        return explanation
