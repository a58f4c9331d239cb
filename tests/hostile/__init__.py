# SPDX-License-Identifier: MIT
# SPDX-FileCopyrightText: The tarveld authors
"""What a hostile world does to the daemon: calls that fail, a kill at any moment, and whatever a wire can carry."""
