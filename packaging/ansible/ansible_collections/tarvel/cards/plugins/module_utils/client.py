# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""How a module runs tarvelctl for one card, and ends."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Mapping
from typing import Any

from ansible.module_utils.basic import AnsibleModule  # type: ignore[import]
from ansible_collections.tarvel.cards.plugins.module_utils import answer

CLIENT: dict[str, Any] = {
    "card": {"type": "str", "required": True},
    "executable": {"type": "str", "default": "tarvelctl"},
    "groups_file": {"type": "path"},
    "interfaces": {"type": "list", "elements": "str", "default": []},
    "timeout": {"type": "float"},
    "retries": {"type": "int"},
}
FORCE: dict[str, Any] = {"force": {"type": "bool", "default": False}}
CHANGE: dict[str, Any] = {**FORCE, "trust_groups": {"type": "bool", "default": False}}
PROBE: dict[str, Any] = {"probe": {"type": "bool", "default": True}}
PERMISSIONS = {"force": "--force", "trust_groups": "--trust-groups", "no_rollback": "--yes"}


def client_options(params: Mapping[str, Any]) -> list[str]:
    """Those for the whole command line."""
    options = [f"--interface={name}" for name in params["interfaces"]]
    for option, name in (("groups", "groups_file"), ("timeout", "timeout"), ("retries", "retries")):
        if params[name] is not None:
            options.append(f"--{option}={params[name]}")
    return options


def permissions(params: Mapping[str, Any]) -> list[str]:
    """What a change is allowed beyond the usual."""
    options = [option for name, option in PERMISSIONS.items() if params.get(name)]
    return options if params.get("probe", True) else [*options, "--no-probe"]


class Card:
    """The card of a task."""

    def __init__(self, module: Any) -> None:
        self._module = module
        self._name = answer.one_card(module.params["card"])
        self._program = module.get_bin_path(module.params["executable"], required=True)
        self._diff: dict[str, str] = {}
        self._warned: set[str] = set()

    def look_at_file(self, *words: str) -> dict[str, Any]:
        """What a command tells that asks no card."""
        return self._run(words, None)

    def read(self, *words: str, expect: Mapping[str, Any] | None = None) -> dict[str, Any]:
        """What a command tells that changes nothing."""
        return self._ask([], words, expect)

    def change(self, *words: str, expect: Mapping[str, Any] | None = None) -> dict[str, Any]:
        """What a command tells that changes the card; in check mode, what it would send."""
        if self._module.check_mode:
            return self.rehearse(*words, expect=expect)
        return self._ask(permissions(self._module.params), words, expect)

    def rehearse(self, *words: str, expect: Mapping[str, Any] | None = None) -> dict[str, Any]:
        """What a command would send, in check mode or not."""
        return self._ask([*permissions(self._module.params), "--dry-run"], words, expect)

    def changed(self, result: Mapping[str, Any]) -> bool:
        """Whether the card is another one now, or nobody knows; in check mode, whether something would be sent."""
        return "frame" in result if self._module.check_mode else result["changed"] is not False

    def show_diff(self, before: Mapping[str, Any], after: Mapping[str, Any]) -> None:
        self._diff = {"before": answer.diff_text(before), "after": answer.diff_text(after)}

    def end(self, result: Mapping[str, Any], **more: Any) -> None:
        """Ends the module well."""
        shown = {"diff": self._diff} if self._diff else {}
        told = {"changed": self.changed(result), "hint": result["hint"], "answer": result}
        self._module.exit_json(**{**told, **shown, **more})

    def _ask(self, options: list[str], words: tuple[str, ...], expect: Mapping[str, Any] | None) -> dict[str, Any]:
        versions = None if expect is None else answer.versions_file(expect)
        return self._run([*client_options(self._module.params), *options, *words, self._name], versions)

    def _run(self, words: Iterable[str], data: str | None) -> dict[str, Any]:
        command = [self._program, "-o", "json", *words]
        code, out, err = self._module.run_command(command, data=data, environ_update={"LC_ALL": "C"})
        for warning in answer.warnings(err):
            self._warn_once(warning)
        (result,) = answer.read_results(code, out, err)
        return result

    def _warn_once(self, warning: str) -> None:
        if warning not in self._warned:
            self._warned.add(warning)
            self._module.warn(warning)


def work_on(module: Any, work: Callable[[Any, Card], None]) -> None:
    """Does it, and ends the module with what went wrong."""
    try:
        work(module, Card(module))
    except answer.ClientError as error:
        changed = error.result.get("changed", False) is not False
        known = {name: error.result.get(name) for name in ("category", "phase", "hint")}
        module.fail_json(
            msg=str(error), rc=error.code, stderr=error.stderr, changed=changed, answer=error.result, **known
        )
    except ValueError as error:
        module.fail_json(msg=str(error))


def run(work: Callable[[Any, Card], None], options: dict[str, Any], **rules: Any) -> None:
    """A module's main."""
    work_on(AnsibleModule({**CLIENT, **options}, supports_check_mode=True, **rules), work)
