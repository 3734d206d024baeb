#pragma once

#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// A session as the identity service describes it in its answer to a join.
///
/// A host needs the session only for the final status screen, or to ask whether documents are listed. The settings
/// hold the session's keys: do not log or store them.
__attribute__((visibility("default")))
@interface ActivationResponse : KivoObject

/// Empty texts and settings.
- (instancetype)init;
+ (instancetype)new;

/// The session in a join answer. A member of the wrong type stays empty. Nil when the text is not a JSON object.
+ (nullable instancetype)responseWithText:(NSString*)text;

/// "data" for an accepted join, "fail" for a refused one.
@property (nonatomic, copy) NSString* responseType;
/// The name of the error, for a refused join.
@property (nonatomic, copy) NSString* responseCode;
/// The transaction identifier.
@property (nonatomic, copy) NSString* tId;

// Settings by the service's names; numbers and flags are texts, too. Entries that are not text are left out when
// written.

/// The addresses of the session, and its number of attempts.
@property (nonatomic, copy) NSDictionary<NSString*, NSString*>* idpConfig;
/// Settings of the application.
@property (nonatomic, copy) NSDictionary<NSString*, NSString*>* appConfig;
/// The addresses and keys for documents.
@property (nonatomic, copy) NSDictionary<NSString*, NSString*>* idpBiodata;
/// The addresses and keys for face and ID scans.
@property (nonatomic, copy) NSDictionary<NSString*, NSString*>* idpFaceMap;

/// Whether the session lists documents to choose from: "app-doclist" is exactly "true". NO for nil.
+ (BOOL)isDocumentListAvailableWithSessionObj:(nullable ActivationResponse*)sessionObj;

@end

NS_ASSUME_NONNULL_END
