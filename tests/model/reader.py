# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""libxml2's text reader, the C library itself: which bytes are a document is its business, not the model's."""

import ctypes
from ctypes import c_char_p, c_int, c_void_p
from types import TracebackType

_XML = ctypes.CDLL("libxml2.so.2")


def _declared(name: str, result: type | None, *arguments: type) -> "ctypes._NamedFuncPointer":
    function = _XML[name]
    function.restype, function.argtypes = result, list(arguments)
    return function


_reader_for_doc = _declared("xmlReaderForDoc", c_void_p, c_char_p, c_char_p, c_char_p, c_int)
_free_reader = _declared("xmlFreeTextReader", None, c_void_p)
_read = _declared("xmlTextReaderRead", c_int, c_void_p)
_name = _declared("xmlTextReaderConstName", c_char_p, c_void_p)
_node_type = _declared("xmlTextReaderNodeType", c_int, c_void_p)
_has_attributes = _declared("xmlTextReaderHasAttributes", c_int, c_void_p)
_attribute = _declared("xmlTextReaderGetAttribute", c_void_p, c_void_p, c_char_p)
_free = ctypes.CFUNCTYPE(None, c_void_p)(c_void_p.in_dll(_XML, "xmlFree").value or 0)

# Without it the library writes its complaints to standard error.
_Silence = ctypes.CFUNCTYPE(None, c_void_p, c_void_p)
_silence = _Silence(lambda _context, _error: None)
_declared("xmlSetStructuredErrorFunc", None, c_void_p, _Silence)(None, _silence)

ELEMENT = 1
END_OF_ELEMENT = 15


class Reader:
    """Over one document, up to its first NUL. Use it in a `with` statement."""

    def __init__(self, text: bytes) -> None:
        self._text = text.split(b"\0")[0]  # the library keeps a pointer into it
        self._reader = _reader_for_doc(self._text, b"noname.xml", None, 0)

    def __bool__(self) -> bool:
        return self._reader is not None

    def read(self) -> int:
        return int(_read(self._reader))

    def name(self) -> str | None:
        name = _name(self._reader)
        return None if name is None else name.decode("utf-8", "surrogateescape")

    def node_type(self) -> int:
        return int(_node_type(self._reader))

    def has_attributes(self) -> bool:
        return int(_has_attributes(self._reader)) == 1

    def attribute(self, name: str) -> str | None:
        pointer = _attribute(self._reader, name.encode())
        if pointer is None:
            return None
        value = ctypes.string_at(pointer).decode("utf-8", "surrogateescape")
        _free(pointer)
        return value

    def __enter__(self) -> "Reader":
        return self

    def __exit__(
        self, kind: type[BaseException] | None, error: BaseException | None, trace: TracebackType | None
    ) -> None:
        if self._reader is not None:
            _free_reader(self._reader)
