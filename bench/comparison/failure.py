"""What ends a comparison."""


class ComparisonError(RuntimeError):
    """Something could not be measured, or the agents do not serve the same."""
