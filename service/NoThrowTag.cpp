// The runtime's archive is position-independent but for its references to the empty tag object std::nothrow. A
// hidden definition of our own in the plug-in resolves them at link time; the object has no state, so that a second
// one beside the standard library's does no harm.
namespace tarnwell {
extern const char noThrowTag __asm__("_ZSt7nothrow") __attribute__((visibility("hidden")));
const char noThrowTag = 0;
} // namespace tarnwell
