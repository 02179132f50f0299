#!/usr/bin/env python3
"""Holds every result.json below a folder against the schema.

usage: validateResults.py SCHEMA FOLDER
"""
import json
import pathlib
import sys

import jsonschema


def refuse(constant):
    raise ValueError(f"{constant} is no JSON")


def main(schema_path, folder):
    validator = jsonschema.Draft202012Validator(json.loads(pathlib.Path(schema_path).read_text()))
    results = sorted(pathlib.Path(folder).rglob("result.json"))
    mistakes = 0
    for path in results:
        result = json.loads(path.read_text(encoding="utf-8"), parse_constant=refuse)
        for error in validator.iter_errors(result):
            place = "/".join(str(step) for step in error.absolute_path)
            print(f"{path}: {place}: {error.message}")
            mistakes += 1
    print(f"{len(results)} results, {mistakes} mistakes")
    return 0 if results and mistakes == 0 else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
