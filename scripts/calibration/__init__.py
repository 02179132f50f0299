"""The corpus by which lumascan's thresholds are chosen and judged: docs/thresholds.md."""
