// Keeps the archive from being empty on toolchains that refuse one.
namespace zqcore::testkit {}
