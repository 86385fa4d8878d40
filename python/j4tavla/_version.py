"""The version of package and library."""
__version__ = "1.1.4.104"
