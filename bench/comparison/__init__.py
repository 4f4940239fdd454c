"""What scripts/bench is made of: the engines that are measured, what was measured, and the document."""
