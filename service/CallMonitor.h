// Watches a blocking call of ITarnwellService from another thread: tells how many bytes the call has sent and received,
// and ends the call by shutting its connection down. For any host; header-only; Linux only.
//
// ITarnwellService itself has no progress and no cancelling. The monitor finds the call's TCP connection from outside:
// it reads in /proc in which system call the calling thread waits, takes the socket that this system call names, and
// asks the kernel (TCP_INFO) about it. So it needs no name look-up, and it does not confuse the call with calls of
// other threads, even to the same service.
//
//   CallMonitor monitor(80);                           // shared by both threads
//
//   // the thread that calls                           // the thread that watches, several times a second
//   {                                                  const CallProgress progress = monitor.progress();
//     const CallMonitor::Watch watch(monitor);         show(progress.sent, progress.received);
//     result = service->getMap(map);                   if (userGaveUp)
//   }                                                    monitor.endCall();
//
// Limits:
// - A call looks the name of its host up before it connects. Meanwhile the phase is NotConnected and endCall() returns
//   false; the look-up ends when the system's resolver gives up. A host that cannot wait so long looks the name up
//   itself before the call.
// - progress() and endCall() find a connection while the calling thread waits on it. If the thread is busy at that
//   moment, one of the next calls finds it.
// - The monitor finds no connection where the kernel has no /proc/PID/task/TID/syscall, in a 32-bit x86 process, and
//   with a plug-in that waits in poll(). Tarnwell's waits in connect(), send() and recv().
// - While the process has no free descriptor, the phase is NotConnected and endCall() returns false.
// - A process that is forked during a Watch sees no connection.
// - Acknowledged bytes have reached the kernel of the service's or the proxy's machine. The service may have carried
//   out a save that was ended after its last byte.
// - ThreadSanitizer reports progress() and endCall(), because they use a descriptor that the calling thread may close
//   meanwhile. That is safe: they duplicate the descriptor and then check that the duplicate is still the same socket.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <mutex>

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace tarnwell {

/// The state of a call at the moment of progress(). Bytes are those of HTTP: head and body, in which base64 makes four
/// bytes of three bytes of a map. They are those of the call's latest connection, also after it was closed.
struct CallProgress {
  /// Where the call is.
  enum Phase {
    /// No call is watched.
    NoCall,
    /// A call is running, but no connection was found: it looks up a name, reads a file, or has got its answer.
    NotConnected,
    /// The connection is being established. The peer has not answered yet.
    Connecting,
    /// The connection is open.
    Connected,
  };
  /// Where the call is at this moment.
  Phase phase = NoCall;
  /// Bytes that the call has handed to the kernel.
  std::int64_t sent = 0;
  /// How many of them the peer's kernel has acknowledged: the figure to show for an upload.
  std::int64_t acknowledged = 0;
  /// Bytes that have arrived, whether the call has read them or not.
  std::int64_t received = 0;
};

/// Watches one call at a time. All operations are safe from any thread; none throws or waits for the network.
class CallMonitor {
public:
  /// `port`: the TCP port that calls connect to: the proxy's if one is set, otherwise the endpoint's (80 if its URL
  /// names none). The monitor never ends a connection that is established to another port.
  explicit CallMonitor(int port) : m_port(port) {}
  CallMonitor(const CallMonitor&) = delete;
  CallMonitor& operator=(const CallMonitor&) = delete;

  /// Marks, from construction to destruction, that the constructing thread makes a call: put it around one operation
  /// of the service and nothing else. After its destruction the monitor uses no socket. It must not outlive the
  /// monitor. A monitor has one Watch at a time: calls on several threads need a monitor each.
  class Watch {
  public:
    /// The constructing thread's call begins.
    explicit Watch(CallMonitor& monitor) : m_monitor(monitor) {
      const std::lock_guard<std::mutex> lock(m_monitor.m_mutex);
      m_monitor.m_thread = syscall(SYS_gettid);
      m_monitor.m_process = getpid();
      m_monitor.m_descriptor = -1;
      m_monitor.m_progress = CallProgress{CallProgress::NotConnected};
    }
    ~Watch() {
      const std::lock_guard<std::mutex> lock(m_monitor.m_mutex);
      m_monitor.m_thread = 0;
      m_monitor.m_progress.phase = CallProgress::NoCall;
    }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

  private:
    CallMonitor& m_monitor;
  };

  /// How far the call is. Makes up to 20 system calls: ask several times a second, not in a loop.
  [[nodiscard]] CallProgress progress() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    inspectCall();
    return m_progress;
  }

  /// Shuts down the call's connection, established or not yet, so that the call fails at once (ResultFailed, or false).
  /// Returns false when there was no connection to shut down. Repeat until the operation has returned, because it may
  /// open another connection: to the next address of the host's name, or to undo a save.
  bool endCall() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const Duplicate socket = inspectCall();
    return socket.descriptor >= 0 && shutdown(socket.descriptor, SHUT_RDWR) == 0;
  }

private:
  /// The monitor's own descriptor of a socket: it keeps its meaning when the call closes the socket, and the process
  /// uses the call's number for another file.
  struct Duplicate {
    int descriptor = -1;

    Duplicate() = default;
    Duplicate(const Duplicate&) = delete;
    Duplicate& operator=(const Duplicate&) = delete;
    Duplicate(Duplicate&& other) noexcept : descriptor(other.descriptor) { other.descriptor = -1; }
    ~Duplicate() {
      if (descriptor >= 0)
        close(descriptor);
    }
  };

  /// The beginning of the kernel's struct tcp_info, which only grows at its end. Declared here, because <netinet/tcp.h>
  /// lacks the later members and <linux/tcp.h> cannot be included beside it.
  struct TcpInfo {
    std::uint8_t state;
    std::uint8_t unused[119];
    std::uint64_t bytesAcknowledged;
    std::uint64_t bytesReceived;
  };
  static_assert(offsetof(TcpInfo, bytesAcknowledged) == 120 && sizeof(TcpInfo) == 136, "as in linux/tcp.h");
  static constexpr int tcpInfoOption = 11;   // TCP_INFO
  static constexpr std::uint8_t synSent = 2; // TCP_SYN_SENT

  /// Whether `descriptor` is a socket; if so, sets `inode`, which identifies it.
  static bool isSocket(int descriptor, ino_t& inode) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISSOCK(status.st_mode))
      return false;
    inode = status.st_ino;
    return true;
  }

  /// The descriptor on which the watched thread waits in the kernel at this moment; -1 when it waits on none.
  [[nodiscard]] int awaitedDescriptor() const {
    char name[64];
    std::snprintf(name, sizeof name, "/proc/self/task/%ld/syscall", m_thread);
    std::FILE* const file = std::fopen(name, "re");
    if (file == nullptr)
      return -1;
    // The line is "NUMBER ARGUMENT...", or "running".
    long number = -1;
    unsigned long argument = 0;
    const int found = std::fscanf(file, "%ld %lx", &number, &argument);
    std::fclose(file);
    if (found != 2)
      return -1;
    for (const long onSocket : {SYS_connect, SYS_sendto, SYS_recvfrom, SYS_sendmsg, SYS_recvmsg, SYS_write, SYS_read}) {
      if (number == onSocket)
        return static_cast<int>(argument);
    }
    return -1;
  }

  /// The port of the peer; 0 before the connection is established.
  static int peerPort(int descriptor) {
    sockaddr_storage address = {};
    socklen_t size = sizeof address;
    if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0)
      return 0;
    if (address.ss_family == AF_INET)
      return ntohs(reinterpret_cast<const sockaddr_in&>(address).sin_port);
    return address.ss_family == AF_INET6 ? ntohs(reinterpret_cast<const sockaddr_in6&>(address).sin6_port) : 0;
  }

  /// Finds the socket of the watched call and sets m_progress. The duplicate is empty when no socket is known.
  Duplicate inspectCall() {
    Duplicate socket;
    if (m_thread == 0 || m_process != getpid())
      return socket;
    m_progress.phase = CallProgress::NotConnected;
    ino_t inode = 0, again = 0;
    const int awaited = awaitedDescriptor();
    // Between the two looks the thread may close its socket, and another thread may get the number: only a socket on
    // which the thread still waits, under the same identity, is the call's.
    if (awaited >= 0 && isSocket(awaited, inode) && (awaited != m_descriptor || inode != m_inode) &&
        awaitedDescriptor() == awaited && isSocket(awaited, again) && again == inode) {
      m_descriptor = awaited;
      m_inode = inode;
    }
    // A busy thread waits on nothing: then take the socket that was found before, if its number still means it.
    if (m_descriptor < 0 || !isSocket(m_descriptor, inode) || inode != m_inode)
      return socket;
    const int duplicate = fcntl(m_descriptor, F_DUPFD_CLOEXEC, 3);
    if (duplicate < 0)
      return socket;
    if (!isSocket(duplicate, inode))
      return socket; // a file by now: stays open, because closing it would drop the process's record locks on it
    socket.descriptor = duplicate;
    if (inode != m_inode || !readProgress(duplicate))
      return {};
    return socket;
  }

  /// Sets m_progress from the kernel's figures. False, when the socket is no TCP connection to the port.
  bool readProgress(int descriptor) {
    int protocol = 0;
    socklen_t size = sizeof protocol;
    if (getsockopt(descriptor, SOL_SOCKET, SO_PROTOCOL, &protocol, &size) != 0 || protocol != IPPROTO_TCP)
      return false;
    TcpInfo info = {};
    size = sizeof info;
    if (getsockopt(descriptor, IPPROTO_TCP, tcpInfoOption, &info, &size) != 0)
      return false;
    if (info.state == synSent) {
      // There is no peer whose port can be checked, but the calling thread itself waits in connect() on this socket.
      m_progress = CallProgress{CallProgress::Connecting};
      return true;
    }
    if (peerPort(descriptor) != m_port)
      return false;
    int unacknowledged = 0;
    if (ioctl(descriptor, TIOCOUTQ, &unacknowledged) != 0)
      return false;
    m_progress.phase = CallProgress::Connected;
    // The kernel counts the SYN as the first acknowledged byte.
    m_progress.acknowledged = std::max<std::int64_t>(static_cast<std::int64_t>(info.bytesAcknowledged) - 1, 0);
    m_progress.sent = m_progress.acknowledged + unacknowledged;
    m_progress.received = static_cast<std::int64_t>(info.bytesReceived);
    return true;
  }

  const int m_port;
  std::mutex m_mutex;
  /// The kernel's number of the calling thread; 0 while no call is watched.
  long m_thread = 0;
  /// The process of that thread: one that is forked from it has the same sockets, but not the call.
  pid_t m_process = 0;
  /// The call's socket, as last found: its number in the calling thread, -1 for none, and its identity.
  int m_descriptor = -1;
  ino_t m_inode = 0;
  CallProgress m_progress;
};

} // namespace tarnwell
