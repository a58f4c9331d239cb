# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""The twin test: the model and the daemon get the same bytes, and must not differ in anything that can be seen."""
