# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""Faults planted into the daemon, to see whether its tests notice. See tools/mutate."""
