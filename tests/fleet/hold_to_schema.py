#!/usr/bin/python3
"""Holds a JSON document to a schema: hold_to_schema.py SCHEMA DOCUMENT. Prints what is wrong, and exits with 1."""

import json
import pathlib
import sys
from typing import Any

import jsonschema


def read(name: str) -> Any:
    return json.loads(pathlib.Path(name).read_text(encoding="utf-8"))


def main() -> int:
    schema = read(sys.argv[1])
    jsonschema.Draft202012Validator.check_schema(schema)
    error = jsonschema.exceptions.best_match(jsonschema.Draft202012Validator(schema).iter_errors(read(sys.argv[2])))
    if error:
        print(f"{error.json_path}: {error.message}")
    return 1 if error else 0


if __name__ == "__main__":
    sys.exit(main())
