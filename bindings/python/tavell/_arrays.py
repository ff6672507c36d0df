"""Names and numbers between Python and the kit, many at once."""

from __future__ import annotations

import ctypes
import os
from typing import TYPE_CHECKING, Any, Dict, List, Optional, Sequence, Tuple, Union, cast

import numpy as np
import numpy.typing as npt

from ._findings import checked, refusal
from ._library import LIBRARY, Function

if TYPE_CHECKING:
    from ._handles import Handle

Floats = npt.NDArray[np.float64]
Positions = npt.NDArray[np.uintp]

# A file's name.
Path = Union[str, "os.PathLike[str]"]
# A number in SI units, or a text with a unit: "25 mm".
Quantity = Union[float, str]
# A number for all or one for each.
Values = Union[Quantity, Sequence[float], npt.ArrayLike]
# Nodes or elements: a name, names, positions from 0, a mask, a slice; None for all.
Which = Union[None, str, int, slice, Sequence[str], Sequence[int], npt.NDArray[Any]]

# The quantity of each key, which says the units that its texts may have. Keys that are not here have no unit.
_QUANTITIES: Dict[str, str] = {
    "x": "length",
    "y": "length",
    "z": "length",
    "length": "length",
    "diameter": "diameter",
    "wetted_perimeter": "diameter",
    "roughness": "diameter",
    "bore_diameter": "diameter",
    "area": "area",
    "pressure": "pressure",
    "mass_flow": "mass_flow",
    "fixed_mass_flow": "mass_flow",
    "mass_flow_limit": "mass_flow",
    "volume_flow": "volume_flow",
    "velocity": "velocity",
    "temperature": "temperature",
    "reference_density": "density",
}


def encoded(text: str) -> bytes:
    """A text for the kit. A zero byte would end it early and is refused."""
    if "\0" in text:
        raise refusal(f"the text {text!r} holds a zero byte", "leave it out")
    try:
        return text.encode("utf-8")
    except UnicodeEncodeError as error:
        raise refusal(f"the text {text!r} is no Unicode text", "leave out lone surrogates") from error


def encoded_path(path: Path) -> bytes:
    name = os.fsencode(path)
    if b"\0" in name:
        raise refusal(f"the file name {name!r} holds a zero byte", "leave it out")
    return name


def address_of(array: npt.NDArray[Any]) -> Optional[int]:
    """The address of an array's numbers; None, the kit's null, for no numbers."""
    return array.ctypes.data if array.size else None


# Up to so many texts, one after the other is quicker than all at once.
_FEW = 8


class Texts:
    """Many texts as the kit wants them: an array of addresses. It must live as long as the call."""

    def __init__(self, texts: Sequence[str]) -> None:
        self.addresses: Positions
        if 0 < len(texts) <= _FEW:
            pointers = (ctypes.c_char_p * len(texts))(*[encoded(text) for text in texts])
            self.addresses = np.frombuffer(memoryview(pointers), dtype=np.uintp)  # keeps the texts too
        else:
            self.addresses = self._all_at_once(texts)

    def _all_at_once(self, texts: Sequence[str]) -> Positions:
        joined = "\0".join(texts)
        try:
            data = joined.encode("utf-8") + b"\0" if len(texts) else b""
        except UnicodeEncodeError as error:
            raise refusal("a name is no Unicode text", "leave out lone surrogates") from error
        self._bytes = np.frombuffer(data, dtype=np.uint8)
        ends = np.flatnonzero(self._bytes == 0)
        if len(ends) != len(texts):
            raise refusal("a name holds a zero byte", "leave it out")
        addresses: Positions = np.zeros(len(texts), dtype=np.uintp)
        addresses[1:] = ends[:-1] + 1
        if len(texts):
            addresses += np.uintp(self._bytes.ctypes.data)
        return addresses

    @property
    def pointer(self) -> Optional[int]:
        return address_of(self.addresses)


def texts_at(address: Optional[int], count: int) -> Tuple[str, ...]:
    """The texts of an array of the kit."""
    if not address or count == 0:
        return ()
    parts = cast(List[bytes], (ctypes.c_char_p * count).from_address(address)[:])
    return tuple(b"\0".join(parts).decode("utf-8", "replace").split("\0"))


def parsed(value: Quantity, key: str) -> float:
    """A value of a key in SI units. Raises BadInput for a text that is no number with a unit of its
    quantity."""
    if not isinstance(value, str):
        return float(value)
    quantity = _QUANTITIES.get(key.rpartition("/")[2])
    if quantity is None:
        raise refusal(f'"{key}" has no unit, but its value is the text {value!r}', "give a number")
    number = ctypes.c_double()
    checked(LIBRARY.tvkParseQuantity, encoded(value), quantity.encode(), ctypes.byref(number))
    return number.value


def numbers_of(values: Values, key: str, count: int) -> Floats:
    """count numbers in SI units: one for each, or the same for all. Raises BadInput when there are others."""
    if isinstance(values, (str, float)):
        return np.full(count, parsed(values, key))
    if isinstance(values, (list, tuple)) and any(isinstance(value, str) for value in values):
        values = [parsed(value, key) for value in values]
    try:
        numbers = np.asarray(values, dtype=np.float64)
    except (TypeError, ValueError) as error:
        raise refusal(f'the values of "{key}" are no numbers: {error}', "give numbers") from error
    if numbers.shape not in ((), (1,), (count,)):
        raise refusal(
            f'"{key}" has values of the shape {numbers.shape} for {count} objects',
            "give one value, or one for each",
        )
    return np.ascontiguousarray(np.broadcast_to(numbers, (count,)))


def names_in(which: Any) -> Optional[List[str]]:
    """The names that a selection consists of; None when it consists of positions."""
    if isinstance(which, str):
        return [which]
    if which is None or isinstance(which, (int, slice)):
        return None
    if isinstance(which, np.ndarray) and which.dtype.kind not in "OU":
        return None
    entries = list(which)
    if entries and all(isinstance(entry, str) for entry in entries):
        return entries
    return None


def found_positions(function: Function, handle: Handle, names: Sequence[str]) -> Positions:
    """Positions of names. Raises BadInput that names all that there are none of."""
    texts = Texts(names)
    positions = np.zeros(len(names), dtype=np.uintp)
    handle.read(function, len(names), texts.pointer, address_of(positions))
    return positions


def selected(function: Function, handle: Handle, which: Which, count: int) -> Optional[Positions]:
    """Positions of a selection among count objects; None for all of them. Raises BadInput for unknown names,
    IndexError for positions that there are none of."""
    if which is None:
        return None
    names = names_in(which)
    if names is not None:
        return found_positions(function, handle, names)
    if isinstance(which, slice):
        part: Positions = np.arange(count, dtype=np.uintp)[which]
        return part
    given = np.atleast_1d(np.asarray(which))
    if given.size == 0:
        return np.zeros(0, dtype=np.uintp)
    if given.dtype.kind not in "iu":
        chosen: Positions = np.arange(count, dtype=np.uintp)[given]
        return chosen
    lowest, highest = int(given.min()), int(given.max())
    if lowest < -count or highest >= count:
        raise IndexError(f"the position {highest if highest >= count else lowest} is out of range of {count}")
    if lowest < 0:
        given = np.where(given < 0, given + count, given)
    flat = np.ascontiguousarray(given.ravel())
    return flat.view(np.uintp) if flat.dtype == np.intp else flat.astype(np.uintp)


class _Lent:
    """Numbers that belong to an object of the kit, for NumPy to read: they stay as long as an array of
    them."""

    def __init__(self, owner: Handle, address: int, count: int) -> None:
        self._owner = owner
        self.__array_interface__ = {
            "version": 3,
            "typestr": np.dtype(np.float64).str,
            "shape": (count,),
            "data": (address, True),
        }


def lent_array(owner: Handle, address: int, count: int) -> Floats:
    """A read-only array of numbers of the kit, without a copy."""
    if count == 0:
        empty = np.zeros(0)
        empty.flags.writeable = False
        return empty
    return np.asarray(_Lent(owner, address, count))
