#!/usr/bin/env python3
"""Holds the JSON that the tests got from tvmgr against its schema.

Usage: json_output.py FOLDER - with the documents that cli_tests wrote under TVMGR_TEST_JSON. Fails, too, when a
command occurs without a result or no error is among them: then nothing would have been checked.
"""
import json
import pathlib
import sys

import jsonschema

SCHEMA = pathlib.Path(__file__).resolve().parents[2] / "docs" / "tvmgr.schema.json"


def documents(path):
    """The document of a run, or the lines of one that watched."""
    text = path.read_text(encoding="utf-8")
    try:
        return [json.loads(text)]
    except json.JSONDecodeError:
        return [json.loads(line) for line in text.splitlines()]


def main():
    schema = json.loads(SCHEMA.read_text(encoding="utf-8"))
    jsonschema.Draft7Validator.check_schema(schema)
    validator = jsonschema.Draft7Validator(schema)
    wanted = {command for command in schema["properties"]["command"]["enum"] if command}
    problems, count, errors = [], 0, 0
    for path in sorted(pathlib.Path(sys.argv[1]).glob("*.json")):
        try:
            found = documents(path)
        except ValueError as error:
            problems.append(f"{path}: no JSON: {error}")
            continue
        for document in found:
            count += 1
            for error in validator.iter_errors(document):
                where = "/".join(map(str, error.absolute_path))
                problems.append(f"{path}: {document.get('command')}: {where or 'document'}: {error.message[:300]}")
            if document.get("error"):
                errors += 1
            else:
                wanted.discard(document.get("command"))
    if wanted:
        problems.append(f"no result of: {', '.join(sorted(wanted))}")
    if errors == 0:
        problems.append("no error among the documents")
    for problem in problems:
        print(problem)
    print(f"tvmgr --json: {count} documents, {errors} of them errors, {len(problems)} problems")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
