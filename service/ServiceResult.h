// The integer results of the host interface. The host interprets them; the numbers are the contract, the names
// are ours. Part of the header-only interface: includes nothing and links nothing. Any thread.
#pragma once

/// @file
/// The result codes.

/// What an operation of ITarnwellService that returns int returns; no other value is ever returned.
enum ServiceResult {
  /// The operation succeeded.
  ResultOk = 0,
  /// The call could not be made or failed (transport, SOAP fault, an answer without its result), or the service
  /// reported "DbError", "None" or a value outside its enumeration.
  ResultFailed = 1,
  /// The service does not know this user name and password.
  ResultNotAUser = 4,
  /// The account exists but is not a premium account.
  ResultNotPremiumAccount = 5,
  /// A map with this identity is already stored, and overwriting was not forced.
  ResultFileExists = 6,
  /// The map belongs to somebody else.
  ResultNoAccess = 7,
  /// The local path given to saveMap names a directory or nothing at all; nothing was sent.
  ResultNoSuchFile = 8,
  /// Others are working on the map at the moment.
  ResultOngoingCollaboration = 9,
  /// The map was removed from the service.
  ResultMapRemoved = 10,
};
