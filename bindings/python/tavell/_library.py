"""The shared library behind the package: where it is found, and the prototypes of its functions.

Every function of tavellkit.h is declared here once, by name, with the types of its result and of its
arguments. Handles and arrays are passed as addresses; a text that the caller must give back is an address
too, see text_of().
"""

from __future__ import annotations

import ctypes
import ctypes.util
import os
import sys
from pathlib import Path
from typing import Any, Callable, Dict, List, Tuple

# The version of the kit that the prototypes below belong to. Kits of the same major and minor version fit.
VERSION = "0.1.0"

# What a call returned (tvkStatus).
OK = 0
NOT_CONVERGED = 1
BAD_INPUT = 2
INTERNAL = 3
CANCELLED = 4

# The position of what is not there.
NO_POSITION = ctypes.c_size_t(-1).value

_text = ctypes.c_char_p
_handle = ctypes.c_void_p
_array = ctypes.c_void_p
_size = ctypes.c_size_t
_int = ctypes.c_int
_double = ctypes.c_double
# A place that a function writes a handle, or a text to be freed, to.
_out = ctypes.POINTER(ctypes.c_void_p)

# int (*)(void* user, int step): a result other than 0 asks to stop.
Progress = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.c_void_p, ctypes.c_int)

PROTOTYPES: Dict[str, Tuple[Any, List[Any]]] = {
    "tvkVersion": (_text, []),
    "tvkFreeText": (None, [_handle]),
    # findings
    "tvkNewFindings": (_handle, []),
    "tvkFreeFindings": (None, [_handle]),
    "tvkClearFindings": (None, [_handle]),
    "tvkAppendFindings": (_int, [_handle, _handle]),
    "tvkFindingsCount": (_size, [_handle]),
    "tvkFindingsCountOf": (_size, [_handle, _int]),
    "tvkFindingsText": (_int, [_handle, _out]),
    "tvkFindingsJson": (_int, [_handle, _out]),
    "tvkFindingCode": (_text, [_handle, _size]),
    "tvkFindingSeverity": (_int, [_handle, _size]),
    "tvkFindingMessage": (_text, [_handle, _size]),
    "tvkFindingRemedy": (_text, [_handle, _size]),
    "tvkFindingFile": (_text, [_handle, _size]),
    "tvkFindingLine": (_size, [_handle, _size]),
    "tvkFindingColumn": (_size, [_handle, _size]),
    "tvkFindingPointer": (_text, [_handle, _size]),
    "tvkFindingObject": (_text, [_handle, _size]),
    "tvkFindingObjectCount": (_size, [_handle, _size]),
    "tvkFindingObjectAt": (_text, [_handle, _size, _size]),
    "tvkFindingNumberCount": (_size, [_handle, _size]),
    "tvkFindingNumberName": (_text, [_handle, _size, _size]),
    "tvkFindingNumberValue": (_double, [_handle, _size, _size]),
    "tvkFindingNumberUnit": (_text, [_handle, _size, _size]),
    # networks: in and out
    "tvkNewNetwork": (_int, [_out, _handle]),
    "tvkFreeNetwork": (None, [_handle]),
    "tvkCopyNetwork": (_int, [_handle, _out, _handle]),
    "tvkReadNetwork": (_int, [_text, _out, _handle]),
    "tvkReadAndExamine": (_int, [_text, _text, _out, _handle]),
    "tvkReadNetworkText": (_int, [_text, _size, _text, _out, _handle]),
    "tvkImportInp": (_int, [_text, _text, _out, _handle]),
    "tvkReadCsv": (_int, [_text, _text, _out, _handle]),
    "tvkWriteNetwork": (_int, [_handle, _text, _handle]),
    "tvkNetworkText": (_int, [_handle, _out, _handle]),
    "tvkWriteCsv": (_int, [_handle, _text, _text, _handle]),
    "tvkNetworkHash": (_int, [_handle, _out, _handle]),
    "tvkScenarioCount": (_size, [_handle]),
    "tvkScenarioName": (_text, [_handle, _size]),
    "tvkNetworkScenario": (_int, [_handle, _text, _out, _handle]),
    "tvkPatchNetwork": (_int, [_handle, _text, _handle]),
    # networks: nodes and elements
    "tvkNodeCount": (_size, [_handle]),
    "tvkElementCount": (_size, [_handle]),
    "tvkNodeNames": (_array, [_handle]),
    "tvkElementNames": (_array, [_handle]),
    "tvkFindNodes": (_int, [_handle, _size, _array, _array, _handle]),
    "tvkFindElements": (_int, [_handle, _size, _array, _array, _handle]),
    "tvkElementEnds": (_int, [_handle, _array, _array, _handle]),
    "tvkElementType": (_text, [_handle, _size]),
    "tvkElementTypes": (_array, [_handle]),
    "tvkAddNodes": (_int, [_handle, _size, _array, _array, _handle]),
    "tvkAddElements": (_int, [_handle, _size, _array, _array, _array, _array, _handle]),
    "tvkSetNodeValues": (_int, [_handle, _text, _size, _array, _array, _handle]),
    "tvkGetNodeValues": (_int, [_handle, _text, _size, _array, _array, _handle]),
    "tvkSetElementValues": (_int, [_handle, _text, _size, _array, _array, _handle]),
    "tvkGetElementValues": (_int, [_handle, _text, _size, _array, _array, _handle]),
    "tvkSetCurve": (_int, [_handle, _size, _size, _array, _array, _handle]),
    # solving and results
    "tvkSolve": (_int, [_handle, _text, Progress, _handle, _out, _handle]),
    "tvkFreeResult": (None, [_handle]),
    "tvkResultOutcome": (_int, [_handle]),
    "tvkResultIterations": (_int, [_handle]),
    "tvkResultHasValues": (_int, [_handle]),
    "tvkResultNetwork": (_int, [_handle, _out, _handle]),
    "tvkNodeResults": (_array, [_handle, _text]),
    "tvkElementResults": (_array, [_handle, _text]),
    "tvkCopyNodeResults": (_int, [_handle, _text, _array, _size, _handle]),
    "tvkCopyElementResults": (_int, [_handle, _text, _array, _size, _handle]),
    "tvkCertificate": (_int, [_handle, _text, _out, _handle]),
    "tvkCertificateIsGood": (_int, [_handle]),
    "tvkResultTables": (_int, [_handle, _text, _text, _out, _handle]),
    "tvkResultExchangeCsv": (_int, [_handle, _out, _handle]),
    "tvkResultText": (_int, [_handle, _out, _handle]),
    "tvkWriteResult": (_int, [_handle, _text, _handle]),
    "tvkReadResult": (_int, [_text, _out, _handle]),
    # checking
    "tvkExamine": (_int, [_handle, _handle]),
    "tvkDiagnose": (_int, [_handle, _handle]),
    "tvkSmallestFailingPart": (
        _int,
        [_handle, _int, Progress, _handle, _array, _size, ctypes.POINTER(_size), _out, _handle],
    ),
    "tvkVerify": (_int, [_handle, _handle]),
    # reports, pictures, exports
    "tvkWriteReport": (_int, [_handle, _text, _text, Progress, _handle, _handle]),
    "tvkWritePicture": (_int, [_handle, _handle, _text, _text, _handle]),
    "tvkWriteExport": (_int, [_handle, _handle, _text, _handle]),
    # fluids, units, files
    "tvkFluids": (_int, [_text, _text, _out, _handle]),
    "tvkFluid": (_int, [_text, _double, _double, _array, _handle]),
    "tvkParseQuantity": (_int, [_text, _text, ctypes.POINTER(_double), _handle]),
    "tvkCheckUnits": (_int, [_text, _handle]),
    "tvkWriteFile": (_int, [_text, _text, _size, _handle]),
}


def _file_name() -> str:
    if sys.platform == "win32":
        return "tavellkit.dll"
    if sys.platform == "darwin":
        return "libtavellkit.0.dylib"
    return "libtavellkit.so.0"


def _candidates() -> List[str]:
    """Where the library may be, the first that is there wins: the file that TAVELLKIT_LIBRARY names and no
    other, that beside the package, that of the system."""
    given = os.environ.get("TAVELLKIT_LIBRARY")
    if given:
        return [given]
    beside = Path(__file__).resolve().parent / "_lib" / _file_name()
    if beside.exists():
        return [str(beside)]
    found = ctypes.util.find_library("tavellkit")
    return [found] if found else []


def _load() -> ctypes.CDLL:
    candidates = _candidates()
    if not candidates:
        raise ImportError(
            f"the library {_file_name()} is not beside the package and not among the libraries of the "
            "system; install the package from its wheel, or name the library in TAVELLKIT_LIBRARY"
        )
    path = candidates[0]
    try:
        library = ctypes.CDLL(path)
    except OSError as error:
        raise ImportError(f"the library {path} cannot be loaded: {error}") from error
    declare(library, path)
    return library


def declare(library: ctypes.CDLL, path: str) -> None:
    """Checks the version of a library and gives its functions their types.

    Raises ImportError when it is none of this kind or of another version.
    """
    missing = [name for name in PROTOTYPES if not hasattr(library, name)]
    if "tvkVersion" in missing:
        raise ImportError(f"the library {path} is not libtavellkit")
    library.tvkVersion.restype = _text
    version = library.tvkVersion().decode("utf-8")
    if version.split(".")[:2] != VERSION.split(".")[:2]:
        raise ImportError(f"the library {path} has the version {version}, the package needs {VERSION}")
    if missing:
        raise ImportError(f"the library {path} lacks {', '.join(missing)}")
    for name, (result, arguments) in PROTOTYPES.items():
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments


LIBRARY = _load()


def version() -> str:
    """The version of the loaded kit, such as "0.1.0"."""
    text: bytes = LIBRARY.tvkVersion()
    return text.decode("utf-8")


def take_text(address: ctypes.c_void_p) -> str:
    """The text that a function wrote through a char**, which is given back. "" when there is none."""
    if not address.value:
        return ""
    try:
        return ctypes.string_at(address.value).decode("utf-8", "replace")
    finally:
        LIBRARY.tvkFreeText(address)


Function = Callable[..., Any]
