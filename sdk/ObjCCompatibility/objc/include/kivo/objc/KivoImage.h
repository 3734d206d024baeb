#pragma once

#import <kivo/objc/KivoObject.h>

NS_ASSUME_NONNULL_BEGIN

/// A picture in a file, which whoever draws the screens decodes.
__attribute__((visibility("default")))
@interface KivoImage : KivoObject

/// The image of that name in the host's asset catalogue; nil when it has none.
+ (nullable instancetype)imageNamed:(NSString*)name;
/// The file is not looked at before it is drawn.
+ (instancetype)imageWithContentsOfFile:(NSString*)path;

@property (nonatomic, readonly) NSString* path;

@end

NS_ASSUME_NONNULL_END
